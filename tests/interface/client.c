#include "client.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <tavrenix/mpio.h>

struct report {
  char* text;
  size_t room;
  int sound;
};

static void add(struct report* report, const char* label, const char* value) {
  int length =
      snprintf(report->text, report->room, "%s=%s\n", label, value == NULL ? "none" : value);
  if (length < 0 || (size_t)length >= report->room) {
    report->sound = 0;
    return;
  }
  report->text += length;
  report->room -= (size_t)length;
}

static const char* textUnder(ObDictionaryRef properties, ObStringRef key) {
  return ObStringGetUTF8(ObDictionaryGetValue(properties, key));
}

static void addNumber(struct report* report, const char* label, ObDictionaryRef from,
                      ObStringRef key) {
  char digits[32];
  uint64_t value = 0;
  if (!ObNumberGetUInt64(ObDictionaryGetValue(from, key), &value)) report->sound = 0;
  snprintf(digits, sizeof digits, "%" PRIu64, value);
  add(report, label, digits);
}

static void reportPath(ObTypeRef element, void* context) {
  struct report* report = context;
  MPIOLogicalUnitPathRef path = element;
  ObDictionaryRef properties = MPIOLogicalUnitPathCopyProperties(path);
  ObDictionaryRef statistics = MPIOLogicalUnitPathCopyStatistics(path);
  MPIOLogicalUnitRef unit = MPIOLogicalUnitPathCopyLogicalUnit(path);
  if (ObGetTypeID(path) != MPIOLogicalUnitPathGetTypeID() || unit == NULL) report->sound = 0;
  add(report, " path", textUnder(properties, kMPIOLogicalUnitPathIdentifierKey));
  addNumber(report, "  sent", statistics, kMPIOLogicalUnitPathStatisticsBytesSentKey);
  if (ObDictionaryGetValue(properties, kMPIOLogicalUnitPathEnabledKey) != kObBooleanTrue)
    report->sound = 0;
  ObRelease(unit);
  ObRelease(statistics);
  ObRelease(properties);
}

static void reportUnit(ObTypeRef element, void* context) {
  struct report* report = context;
  MPIOLogicalUnitRef unit = element;
  ObDictionaryRef properties = MPIOLogicalUnitCopyProperties(unit);
  ObDictionaryRef statistics = MPIOLogicalUnitCopyStatistics(unit);
  ObArrayRef paths = MPIOLogicalUnitCopyPaths(unit);
  add(report, "unit", textUnder(properties, kMPIOLogicalUnitAliasKey));
  addNumber(report, " commands", statistics, kMPIOLogicalUnitStatisticsTotalCommandsKey);
  if (ObDateGetUnixNanoseconds(
          ObDictionaryGetValue(statistics, kMPIOLogicalUnitStatisticsSamplingDateKey)) <= 0) {
    report->sound = 0;
  }
  ObArrayApplyFunction(paths, reportPath, report);
  ObRelease(paths);
  ObRelease(statistics);
  ObRelease(properties);
}

int clientListAndChange(char* text, size_t size) {
  struct report report = {text, size, 1};
  ObErrorRef error = NULL;
  ObArrayRef units = MPIOCopyLogicalUnits();
  int count = (int)ObArrayGetCount(units);
  ObArrayApplyFunction(units, reportUnit, &report);
  if (!MPIOLogicalUnitSetAlgorithm(ObArrayGetValueAtIndex(units, 0),
                                   kMPIOLogicalUnitAlgorithmLeastBytes, &error)) {
    report.sound = 0;
  }
  if (MPIOLogicalUnitSetBatchCount(ObArrayGetValueAtIndex(units, 0), 0, &error)) report.sound = 0;
  ObStringRef description = ObErrorCopyDescription(error);
  add(&report, "error", ObStringGetUTF8(description));
  ObRelease(description);
  ObRelease(error);
  ObRelease(units);
  return report.sound ? count : -1;
}
