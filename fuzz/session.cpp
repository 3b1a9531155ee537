#include "fuzz/session.hpp"

#include <algorithm>

#include "fuzz/front_end.hpp"
#include "fuzz/promise.hpp"

namespace tavrenix::fuzz {

using test::Owned;

namespace {

struct Member {
  ObStringRef key;
  ObTypeID kind;
};

void expectKinds(ObDictionaryRef dictionary, std::initializer_list<Member> members,
                 const char* promise) {
  for (const auto& [key, kind] : members) {
    const ObTypeRef value = ObDictionaryGetValue(dictionary, key);
    expect(value == nullptr || ObGetTypeID(value) == kind, promise);
  }
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

void expectTotal(ObDictionaryRef counters, ObStringRef total, ObStringRef sent,
                 ObStringRef received) {
  expect(counter(counters, total) == counter(counters, sent) + counter(counters, received),
         "a total is a sum");
}

void expectVolume(ObTypeRef volume, void* /*unused*/) {
  expect(ObGetTypeID(volume) == ObDictionaryGetTypeID(), "a volume is a dictionary");
  expectKinds(static_cast<ObDictionaryRef>(volume),
              {{kMPIOLogicalUnitVolumeNameKey, ObStringGetTypeID()},
               {kMPIOLogicalUnitVolumeSizeKey, ObNumberGetTypeID()},
               {kMPIOLogicalUnitVolumeMountPointKey, ObStringGetTypeID()}},
              "a volume's properties are of their kinds");
}

void expectUnitProperties(ObDictionaryRef unit) {
  expect(isIdentifier(unit, kMPIOLogicalUnitIdentifierKey), "a unit's identifier is hexadecimal");
  expectKinds(unit,
              {{kMPIOLogicalUnitAliasKey, ObStringGetTypeID()},
               {kMPIOLogicalUnitVendorIDKey, ObStringGetTypeID()},
               {kMPIOLogicalUnitProductIDKey, ObStringGetTypeID()},
               {kMPIOLogicalUnitVolumesKey, ObArrayGetTypeID()}},
              "a unit's properties are of their kinds");
  expect(counter(unit, kMPIOLogicalUnitBatchCountKey) <= UINT32_MAX, "a batch count has 32 bits");
  expect(isOneOf(ObDictionaryGetValue(unit, kMPIOLogicalUnitAlgorithmKey),
                 {kMPIOLogicalUnitAlgorithmRoundRobin, kMPIOLogicalUnitAlgorithmLeastQueueDepth,
                  kMPIOLogicalUnitAlgorithmLeastBytes}),
         "an algorithm is one of three");
  const ObTypeRef volumes = ObDictionaryGetValue(unit, kMPIOLogicalUnitVolumesKey);
  ObArrayApplyFunction(static_cast<ObArrayRef>(volumes), expectVolume, nullptr);
}

void expectPathProperties(ObDictionaryRef path) {
  expect(isIdentifier(path, kMPIOLogicalUnitPathIdentifierKey),
         "a path's identifier is hexadecimal");
  expectKinds(path,
              {{kMPIOLogicalUnitPathInterconnectKey, ObStringGetTypeID()},
               {kMPIOLogicalUnitPathHostPortIdentifierKey, ObDataGetTypeID()},
               {kMPIOLogicalUnitPathEnabledKey, ObBooleanGetTypeID()}},
              "a path's properties are of their kinds");
  expect(isOneOf(ObDictionaryGetValue(path, kMPIOLogicalUnitPathStateKey),
                 {nullptr, kMPIOPathStateActiveOptimized, kMPIOPathStateActiveNonOptimized,
                  kMPIOPathStateStandby, kMPIOPathStateUnavailable}),
         "a path's state is one of four");
}

// call: a change, with where it is to put its error.
template <class Call>
void change(Call call) {
  Owned<ObErrorRef> error;
  const bool done = call(error.out());
  expect(!error || !done, "a change that is done has no error");
  const auto code = ObErrorGetCode(error.get());
  expect(!error || (code >= kMPIOErrorBadArgument && code <= kMPIOErrorNoResources),
         "an error is one of the table");
}

void usePath(MPIOLogicalUnitPathRef path) {
  if (const Owned<ObDictionaryRef> properties{MPIOLogicalUnitPathCopyProperties(path)}) {
    expectPathProperties(properties.get());
  }
  if (const Owned<ObDictionaryRef> counters{MPIOLogicalUnitPathCopyStatistics(path)}) {
    expect(counter(counters.get(), kMPIOLogicalUnitPathStatisticsPathStateKey) <= UINT8_MAX,
           "a path's state is a byte");
    expectTotal(counters.get(), kMPIOLogicalUnitPathStatisticsTotalBytesKey,
                kMPIOLogicalUnitPathStatisticsBytesSentKey,
                kMPIOLogicalUnitPathStatisticsBytesReceivedKey);
  }
  Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(path));
  for (const auto set : {MPIOLogicalUnitPathEnable, MPIOLogicalUnitPathDisable}) {
    change([&](ObErrorRef* error) { return set(path, error); });
  }
}

void useUnit(MPIOLogicalUnitRef unit) {
  if (const Owned<ObDictionaryRef> properties{MPIOLogicalUnitCopyProperties(unit)}) {
    expectUnitProperties(properties.get());
  }
  if (const Owned<ObDictionaryRef> counters{MPIOLogicalUnitCopyStatistics(unit)}) {
    expectTotal(counters.get(), kMPIOLogicalUnitStatisticsTotalBytesKey,
                kMPIOLogicalUnitStatisticsBytesSentKey, kMPIOLogicalUnitStatisticsBytesReceivedKey);
  }
  change([&](ObErrorRef* error) {
    return MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmRoundRobin, error);
  });
  change([&](ObErrorRef* error) { return MPIOLogicalUnitSetBatchCount(unit, 3, error); });
  for (const auto set : {MPIOLogicalUnitEnableAllPaths, MPIOLogicalUnitDisableAllPaths}) {
    change([&](ObErrorRef* error) { return set(unit, error); });
  }
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
