// The entry point of the command, for every program that contains it.
#pragma once

#include <cstdint>

// Runs the command and returns its exit status: 1 if there is no argument or the caller is not the
// superuser, and 0 in every other case, failures included. REQUIRES: it is called once in a
// process.
// argc and argv are those of main; the call reorders argv. effectiveUser returns the caller's
// effective user ID, as geteuid does. It is called at most once, and not at all if there is no
// argument.
int tavrenixMain(int argc, char** argv, std::uint32_t (*effectiveUser)());
