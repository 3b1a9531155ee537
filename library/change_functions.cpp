// The public functions that change something. Some check whether the device is present, and some
// rescan first. Fixed: clients rely on which function does what.
#include "library/call.hpp"

#include "model/public_values.hpp"

using namespace tavrenix;

namespace {

// Returns the code of the algorithm, or 0 if the value is none.
std::uint32_t algorithmCode(const ob::String* value) {
  const Algorithm* algorithm = value == nullptr ? nullptr : algorithmOfPublicValue(*value);
  return algorithm == nullptr ? 0 : algorithm->code;
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
    return path.disable(error);  // on purpose without a presence test, unlike enable
  });
}

// On purpose this passes a unit to the mode for paths. The rescan then marks a pending change as
// seen, but scans nothing.
bool MPIOLogicalUnitEnableAllPaths(MPIOLogicalUnitRef handle, ObErrorRef* errorOut) {
  return changeWithHandle<MPIOLogicalUnit>(handle, errorOut, [](auto& unit, ErrorOut error) {
    if (!isPresent(unit)) return false;
    MPIOManagerRescan(MPIORescanPathLogicalUnit, &unit);
    return unit.enableAllPaths(error);
  });
}

bool MPIOLogicalUnitDisableAllPaths(MPIOLogicalUnitRef handle, ObErrorRef* errorOut) {
  // On purpose this function alone stores no error if the handle is of another kind.
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
    // An unknown algorithm has code 0, which fails without an error.
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
