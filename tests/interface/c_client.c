/* A client in plain C, called by c_client_test.cpp: prints all that the library returns. */
#include <inttypes.h>
#include <stdio.h>
#include <tavrenix/mpio.h>

static void printPair(ObStringRef key, ObTypeRef value, void* report);

static void printValue(ObTypeRef value, void* report) {
  uint64_t number = 0;
  if (ObGetTypeID(value) == ObStringGetTypeID()) fprintf(report, " %s", ObStringGetUTF8(value));
  if (ObNumberGetUInt64(value, &number)) fprintf(report, " %" PRIu64, number);
  if (value == kObBooleanTrue) fputs(" true", report);
  if (ObDateGetUnixNanoseconds(value) > 0) fputs(" date", report);
  if (ObDataGetLength(value) > 0) fprintf(report, " %zu bytes", ObDataGetLength(value));
  ObArrayApplyFunction(value, printValue, report);
  ObDictionaryApplyFunction(value, printPair, report);
}

static void printPair(ObStringRef key, ObTypeRef value, void* report) {
  fprintf(report, "\n%s:", ObStringGetUTF8(key));
  printValue(value, report);
}

static void printAndRelease(ObTypeRef object, FILE* report) {
  if (object == NULL) return;
  printValue(object, report);
  fputs("\n", report);
  ObRelease(object);
}

/* Prints a unit and its paths, or a path. A function for the other kind of handle returns NULL. */
static void printHandle(ObTypeRef handle, void* report) {
  fputs(ObGetTypeID(handle) == MPIOLogicalUnitPathGetTypeID() ? "[path]" : "[unit]", report);
  printAndRelease(MPIOLogicalUnitCopyProperties(handle), report);
  printAndRelease(MPIOLogicalUnitCopyStatistics(handle), report);
  printAndRelease(MPIOLogicalUnitPathCopyProperties(handle), report);
  printAndRelease(MPIOLogicalUnitPathCopyStatistics(handle), report);
  ObArrayRef paths = MPIOLogicalUnitCopyPaths(handle);
  ObArrayApplyFunction(paths, printHandle, report);
  ObRelease(paths);
}

void printUnits(void);
void printUnits(void) {
  ObArrayRef units = MPIOCopyLogicalUnits();
  ObArrayApplyFunction(units, printHandle, stdout);
  ObRelease(units);
}
