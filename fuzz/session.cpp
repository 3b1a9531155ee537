#include "fuzz/session.hpp"

#include <algorithm>

#include "fuzz/front_end.hpp"
#include "fuzz/promise.hpp"

namespace tavrenix::fuzz {

using test::Owned;

namespace {

bool isAbsentOr(ObDictionaryRef dictionary, ObStringRef key, ObTypeID kind) {
  const ObTypeRef value = ObDictionaryGetValue(dictionary, key);
  return value == nullptr || ObGetTypeID(value) == kind;
}

bool isIdentifier(ObDictionaryRef dictionary, ObStringRef key) {
  if (ObDictionaryGetValue(dictionary, key) == nullptr) return true;
  const std::string text = test::textUnder(dictionary, key);
  return text.size() % 2 == 0 && text.size() <= 254 &&
         text.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

bool isOneOf(ObTypeRef value, std::initializer_list<ObStringRef> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

std::uint64_t counter(ObDictionaryRef dictionary, ObStringRef key) {
  std::uint64_t value = 0;
  const auto number = static_cast<ObNumberRef>(ObDictionaryGetValue(dictionary, key));
  expect(ObNumberGetUInt64(number, &value), "counters are unsigned numbers");
  return value;
}

void expectVolume(ObTypeRef volume, void* /*unused*/) {
  const auto dictionary = static_cast<ObDictionaryRef>(volume);
  expect(ObGetTypeID(volume) == ObDictionaryGetTypeID() &&
             isAbsentOr(dictionary, kMPIOLogicalUnitVolumeNameKey, ObStringGetTypeID()) &&
             isAbsentOr(dictionary, kMPIOLogicalUnitVolumeSizeKey, ObNumberGetTypeID()) &&
             isAbsentOr(dictionary, kMPIOLogicalUnitVolumeMountPointKey, ObStringGetTypeID()),
         "volumes are as promised");
}

void expectUnitProperties(ObDictionaryRef unit) {
  const ObTypeRef algorithm = ObDictionaryGetValue(unit, kMPIOLogicalUnitAlgorithmKey);
  expect(isIdentifier(unit, kMPIOLogicalUnitIdentifierKey), "a unit's identifier is hexadecimal");
  expect(isAbsentOr(unit, kMPIOLogicalUnitAliasKey, ObStringGetTypeID()) &&
             isAbsentOr(unit, kMPIOLogicalUnitVendorIDKey, ObStringGetTypeID()) &&
             isAbsentOr(unit, kMPIOLogicalUnitProductIDKey, ObStringGetTypeID()) &&
             isAbsentOr(unit, kMPIOLogicalUnitVolumesKey, ObArrayGetTypeID()),
         "a unit's properties are of their kinds");
  expect(counter(unit, kMPIOLogicalUnitBatchCountKey) <= UINT32_MAX, "a batch count has 32 bits");
  expect(isOneOf(algorithm,
                 {kMPIOLogicalUnitAlgorithmRoundRobin, kMPIOLogicalUnitAlgorithmLeastQueueDepth,
                  kMPIOLogicalUnitAlgorithmLeastBytes}),
         "an algorithm is one of three");
  const auto volumes =
      static_cast<ObArrayRef>(ObDictionaryGetValue(unit, kMPIOLogicalUnitVolumesKey));
  ObArrayApplyFunction(volumes, expectVolume, nullptr);
}

void expectPathProperties(ObDictionaryRef path) {
  expect(isIdentifier(path, kMPIOLogicalUnitPathIdentifierKey),
         "a path's identifier is hexadecimal");
  expect(isAbsentOr(path, kMPIOLogicalUnitPathInterconnectKey, ObStringGetTypeID()) &&
             isAbsentOr(path, kMPIOLogicalUnitPathHostPortIdentifierKey, ObDataGetTypeID()) &&
             isAbsentOr(path, kMPIOLogicalUnitPathEnabledKey, ObBooleanGetTypeID()),
         "a path's properties are of their kinds");
  expect(isOneOf(ObDictionaryGetValue(path, kMPIOLogicalUnitPathStateKey),
                 {nullptr, kMPIOPathStateActiveOptimized, kMPIOPathStateActiveNonOptimized,
                  kMPIOPathStateStandby, kMPIOPathStateUnavailable}),
         "a path's state is one of four");
}

void expectError(const Owned<ObErrorRef>& error, bool done) {
  expect(!error || !done, "a change that is done has no error");
  const auto code = ObErrorGetCode(error.get());
  expect(!error || (code >= kMPIOErrorBadArgument && code <= kMPIOErrorNoResources),
         "an error is one of the table");
}

template <class Call>
void change(Call call) {
  Owned<ObErrorRef> error;
  const bool done = call(error.out());
  expectError(error, done);
}

void usePath(MPIOLogicalUnitPathRef path) {
  const Owned<ObDictionaryRef> properties(MPIOLogicalUnitPathCopyProperties(path));
  if (properties) expectPathProperties(properties.get());
  if (const Owned<ObDictionaryRef> counters{MPIOLogicalUnitPathCopyStatistics(path)}) {
    expect(counter(counters.get(), kMPIOLogicalUnitPathStatisticsPathStateKey) <= UINT8_MAX,
           "a path's state is a byte");
    expect(counter(counters.get(), kMPIOLogicalUnitPathStatisticsTotalBytesKey) ==
               counter(counters.get(), kMPIOLogicalUnitPathStatisticsBytesSentKey) +
                   counter(counters.get(), kMPIOLogicalUnitPathStatisticsBytesReceivedKey),
           "a total is a sum");
  }
  Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(path));
  change([&](ObErrorRef* error) { return MPIOLogicalUnitPathEnable(path, error); });
  change([&](ObErrorRef* error) { return MPIOLogicalUnitPathDisable(path, error); });
}

void useUnit(MPIOLogicalUnitRef unit) {
  if (const Owned<ObDictionaryRef> properties{MPIOLogicalUnitCopyProperties(unit)}) {
    expectUnitProperties(properties.get());
  }
  if (const Owned<ObDictionaryRef> counters{MPIOLogicalUnitCopyStatistics(unit)}) {
    expect(counter(counters.get(), kMPIOLogicalUnitStatisticsTotalBytesKey) ==
               counter(counters.get(), kMPIOLogicalUnitStatisticsBytesSentKey) +
                   counter(counters.get(), kMPIOLogicalUnitStatisticsBytesReceivedKey),
           "a total is a sum");
  }
  change([&](ObErrorRef* error) {
    return MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmRoundRobin, error);
  });
  change([&](ObErrorRef* error) { return MPIOLogicalUnitSetBatchCount(unit, 3, error); });
  change([&](ObErrorRef* error) { return MPIOLogicalUnitEnableAllPaths(unit, error); });
  change([&](ObErrorRef* error) { return MPIOLogicalUnitDisableAllPaths(unit, error); });
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
  for (std::size_t i = 0; i < ObArrayGetCount(paths.get()); ++i)
    usePath(test::at<MPIOLogicalUnitPathRef>(paths, i));
}

}  // namespace

void useAll(const Owned<ObArrayRef>& units) {
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i)
    useUnit(test::at<MPIOLogicalUnitRef>(units, i));
}

void runCommands(const Owned<ObArrayRef>& units) {
  expectReport(runFrontEnd({"list"}).output);
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i) {
    const Owned<ObDictionaryRef> properties(
        MPIOLogicalUnitCopyProperties(test::at<MPIOLogicalUnitRef>(units, i)));
    const ObTypeRef known = ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitIdentifierKey);
    if (known == nullptr) continue;
    const std::string id = test::utf8(known);
    expectReport(runFrontEnd({"info", "-i", id}).output);
    runFrontEnd({"modify", "lun", "-i", id, "-a", "LeastIO", "-b", "2"});
    runFrontEnd({"modify", "path", "-l", id, "-i", "01", "-d"});
  }
}

}  // namespace tavrenix::fuzz
