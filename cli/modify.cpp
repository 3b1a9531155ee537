#include "cli/modify.hpp"

#include <tavrenix/mpio.h>

#include <cstdio>

#include "cli/error_slot.hpp"
#include "cli/lookup.hpp"
#include "cli/requests.hpp"

namespace tavrenix::cli {

namespace {

MPIOLogicalUnitRef findUnit(const Identifier& identifier) {
  const MPIOLogicalUnitRef unit = findLogicalUnitByIdentifier(identifier.data());
  if (unit == nullptr) std::printf("Unable to find lun %s\n", identifier.data());
  return unit;
}

// A unit's refusals have two forms: a missing error and a missing description read the same.
void tellLunRefusal(const char* described, const char* undescribed, const ErrorSlot& error) {
  if (const auto reason = error.description()) {
    std::printf("%s: %s\n", described, reason->c_str());
  } else {
    std::printf("%s: reason unknown\n", undescribed);
  }
}

// A path's refusals have three forms.
void tellPathRefusal(const char* verb, const ErrorSlot& error) {
  if (error.empty()) {
    std::printf("Unable to %s path\n", verb);
  } else {
    const auto reason = error.description();
    std::printf("Unable to %s path: %s\n", verb, reason ? reason->c_str() : "reason unknown");
  }
}

}  // namespace

void modifyLun(const Arguments& arguments) {
  const auto request = readLunRequest(arguments);
  if (!request) return;
  const MPIOLogicalUnitRef unit = findUnit(request->unit);
  if (unit == nullptr) return;

  ErrorSlot error;
  const auto setAlgorithm = [&](ObErrorRef* slot) {
    return MPIOLogicalUnitSetAlgorithm(unit, *request->algorithm, slot);
  };
  const auto setBatchCount = [&](ObErrorRef* slot) {
    return MPIOLogicalUnitSetBatchCount(unit, *request->batchCount, slot);
  };
  if (request->algorithm != nullptr && !error.attempt(setAlgorithm)) {
    tellLunRefusal("Unable to change algorithm", "Unable to change algorithm", error);
  }
  if (request->batchCount && !error.attempt(setBatchCount)) {
    // The described form has always lacked the word "change".
    tellLunRefusal("Unable to batch count", "Unable to change batch count", error);
  }
}

void modifyPath(const Arguments& arguments) {
  const auto request = readPathRequest(arguments);
  if (!request) return;
  const MPIOLogicalUnitRef unit = findUnit(*request->unit);
  if (unit == nullptr) return;

  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
  const MPIOLogicalUnitPathRef path = findPathByIdentifier(paths.get(), request->path->data());
  if (path == nullptr) {
    std::printf("Unable to find path %s\n", request->path->data());
    return;
  }

  ErrorSlot error;
  const auto change = request->enable ? MPIOLogicalUnitPathEnable : MPIOLogicalUnitPathDisable;
  if (!error.attempt([&](ObErrorRef* slot) { return change(path, slot); })) {
    tellPathRefusal(request->enable ? "enable" : "disable", error);
  }
}

}  // namespace tavrenix::cli
