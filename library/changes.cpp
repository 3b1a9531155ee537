// The public functions that change something. Which of them test presence and which rescan is
// uneven on purpose.
#include "library/call.hpp"

#include "model/keys.hpp"

using namespace tavrenix;

namespace {

// 0 for any other string.
std::uint32_t algorithmCode(const ob::String* value) {
  if (value == nullptr) return 0;
  if (value->equals(keys::kMPIOLogicalUnitAlgorithmRoundRobin)) return kMPIOAlgorithmRoundRobin;
  if (value->equals(keys::kMPIOLogicalUnitAlgorithmLeastQueueDepth))
    return kMPIOAlgorithmLeastQueueDepth;
  if (value->equals(keys::kMPIOLogicalUnitAlgorithmLeastBytes)) return kMPIOAlgorithmLeastBytes;
  return 0;
}

}  // namespace

extern "C" {

bool MPIOLogicalUnitPathEnable(MPIOLogicalUnitPathRef handle, ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnitPath>(handle, errorOut, [](auto& path, ErrorOut error) {
    return isPresent(path) && path.enable(error);
  });
}

bool MPIOLogicalUnitPathDisable(MPIOLogicalUnitPathRef handle, ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnitPath>(handle, errorOut, [](auto& path, ErrorOut error) {
    return path.disable(error);  // without a presence test, unlike enable
  });
}

// Mode 3 with a logical unit takes note of a pending change without rebuilding: kept on purpose.
bool MPIOLogicalUnitEnableAllPaths(MPIOLogicalUnitRef handle, ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnit>(handle, errorOut, [](auto& unit, ErrorOut error) {
    if (!isPresent(unit)) return false;
    MPIOManagerRescan(MPIORescanPathLogicalUnit, &unit);
    return unit.enableAllPaths(error);
  });
}

bool MPIOLogicalUnitDisableAllPaths(MPIOLogicalUnitRef handle, ObErrorRef* errorOut) {
  // A handle of another kind is not told, unlike in all other functions.
  ObErrorRef* const wrongKindOut = nullptr;
  return changeWithHandle<MPIOLogicalUnit>(handle, errorOut, wrongKindOut,
                                           [](auto& unit, ErrorOut error) {
                                             if (!isPresent(unit)) return false;
                                             MPIOManagerRescan(MPIORescanPathLogicalUnit, &unit);
                                             return unit.disableAllPaths(error);
                                           });
}

bool MPIOLogicalUnitSetAlgorithm(MPIOLogicalUnitRef handle, ObStringRef algorithm,
                                 ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnit>(handle, errorOut, [&](auto& unit, ErrorOut error) {
    // An unknown algorithm is code 0, which fails without an error.
    return isPresent(unit) &&
           unit.setAlgorithm(algorithmCode(ob::fromC<ob::String>(algorithm)), error);
  });
}

bool MPIOLogicalUnitSetBatchCount(MPIOLogicalUnitRef handle, uint32_t newBatchCount,
                                  ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnit>(handle, errorOut, [&](auto& unit, ErrorOut error) {
    if (!isPresent(unit)) return false;
    if (newBatchCount == 0) {
      *error = MPIOErrorCreate("newBatchCount cannot be 0", kErrorBadArgument);
      return false;
    }
    return unit.setBatchCount(newBatchCount, error);
  });
}

}  // extern "C"
