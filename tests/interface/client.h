/* A client of the library in plain C, called by a test. */
#ifndef TAVRENIX_TESTS_INTERFACE_CLIENT_H
#define TAVRENIX_TESTS_INTERFACE_CLIENT_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Lists all units with their paths and statistics into text, sets the first unit to least bytes,
 * and gives back all that it was given. Returns the number of units, or -1 where something was not
 * as documented. */
int clientListAndChange(char* text, size_t size);

#ifdef __cplusplus
}
#endif

#endif
