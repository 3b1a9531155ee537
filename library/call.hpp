// What public functions do before and around their own work, in the order in which it is
// observable: a null handle, the scratch pool, the kind of the handle; then the work; then the
// error handed out.
#pragma once

#include <tavrenix/mpio.h>

#include <new>

#include "library/manager.hpp"
#include "library/pool.hpp"
#include "runtime/c_bridge.hpp"

namespace tavrenix {

// Runs work. Where memory runs out it yields the failure value: null, zero or false.
template <class Result, class Work>
Result withoutThrowing(Work work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return Result{};
  }
}

// The same inside a scratch pool.
template <class Result, class Work>
Result withPool(Work work) noexcept {
  const auto pool = MPIOScratchPoolCreate();
  return pool ? withoutThrowing<Result>(work) : Result{};
}

// The model object behind a handle, borrowed; null where the handle is of another kind.
template <class Model>
Model* modelOf(const void* handle) noexcept {
  // Handles are const in C, where callers never see the object; the object itself is not.
  auto* object = static_cast<ob::Object*>(const_cast<void*>(handle));
  return dynamic_cast<Model*>(object);
}

// Runs work with the model object behind the handle. A handle of another kind yields the failure
// value.
template <class Model, class Result, class Work>
Result withHandle(const void* handle, Work work) noexcept {
  if (handle == nullptr) return Result{};
  return withPool<Result>([&]() -> Result {
    Model* model = modelOf<Model>(handle);
    return model == nullptr ? Result{} : work(*model);
  });
}

inline bool isPresent(const MPIOLogicalUnit& unit) noexcept {
  return static_cast<bool>(knownLogicalUnit(unit.serviceEntryID()));
}
inline bool isPresent(const MPIOLogicalUnitPath& path) noexcept {
  return static_cast<bool>(knownPath(path.serviceEntryID()));
}

// A new reference for the caller, or null.
template <class CRef, class T>
CRef handOut(ob::Ref<T> object) noexcept {
  return ob::toC<CRef>(object.detach());
}

inline constexpr std::string_view badReferenceMessage(const MPIOLogicalUnit*) {
  return "Bad logical unit object reference";
}
inline constexpr std::string_view badReferenceMessage(const MPIOLogicalUnitPath*) {
  return "Bad path object reference";
}

// Runs work(model, error) with the model object behind the handle and hands its error out, retained
// once: the pool drops it at the end. The caller's slot is written only where there is an error.
// wrongKindOut is the slot for the error about a handle of another kind.
template <class Model, class Work>
bool changeWithHandle(const void* handle, ObErrorRef* errorOut, ObErrorRef* wrongKindOut,
                      Work work) noexcept {
  if (handle == nullptr) return false;
  return withPool<bool>([&] {
    const ob::Error* error = nullptr;
    bool done = false;
    ObErrorRef* out = errorOut;
    if (Model* model = modelOf<Model>(handle)) {
      done = work(*model, &error);
    } else {
      error = MPIOErrorCreate(badReferenceMessage(model), kErrorBadArgument);
      out = wrongKindOut;
    }
    if (error != nullptr && out != nullptr) {
      *out = handOut<ObErrorRef>(ob::Ref<const ob::Error>::retain(error));
    }
    return done;
  });
}

template <class Model, class Work>
bool changeWithHandle(const void* handle, ObErrorRef* errorOut, Work work) noexcept {
  return changeWithHandle<Model>(handle, errorOut, errorOut, work);
}

}  // namespace tavrenix
