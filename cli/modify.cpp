#include "cli/modify.hpp"

#include <tavrenix/mpio.h>

#include <cstdio>

#include "cli/change_request.hpp"
#include "cli/objects.hpp"

namespace tavrenix::cli {

namespace {

MPIOLogicalUnitRef findUnit(const Identifier& identifier) {
  const MPIOLogicalUnitRef unit = findLogicalUnitByIdentifier(identifier.data());
  if (unit == nullptr) std::printf("Unable to find lun %s\n", identifier.data());
  return unit;
}

// Prints `described` and the description of the error. If there is no error, or it has no
// description, prints `undescribed` and that the reason is unknown.
void reportLunFailure(const char* described, const char* undescribed, const ErrorSlot& error) {
  if (const auto reason = error.description()) {
    std::printf("%s: %s\n", described, reason->c_str());
  } else {
    std::printf("%s: reason unknown\n", undescribed);
  }
}

// Prints the verb and the description of the error. Unlike for a unit, the message says nothing of
// a reason if there is no error.
void reportPathFailure(const char* verb, const ErrorSlot& error) {
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
    reportLunFailure("Unable to change algorithm", "Unable to change algorithm", error);
  }
  if (request->batchCount && !error.attempt(setBatchCount)) {
    // Fixed: the form with a description lacks the word "change". Scripts compare the messages.
    reportLunFailure("Unable to batch count", "Unable to change batch count", error);
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
    reportPathFailure(request->enable ? "enable" : "disable", error);
  }
}

}  // namespace tavrenix::cli
