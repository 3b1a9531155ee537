// What every public function does around its own work. Clients can observe the order, so it is
// fixed: refuse a null handle, make the scratch pool, check the kind of the handle, do the work,
// and give the error to the caller.
#pragma once

#include <tavrenix/mpio.h>

#include <memory>

#include "library/manager.hpp"
#include "runtime/c/c_bridge.hpp"
#include "runtime/exhaustion.hpp"
#include "runtime/pool.hpp"

namespace tavrenix {

// Returns a pool for the temporary objects of one call; its destructor drains it. Returns null if
// memory runs out: the call must then return its failure value.
inline std::unique_ptr<ob::Pool> MPIOScratchPoolCreate() noexcept {
  return ob::catchExhaustion(std::unique_ptr<ob::Pool>(),
                             [] { return std::make_unique<ob::Pool>(); });
}

// Runs the work inside a scratch pool and a look at the host, and returns its result. Returns the
// failure value (null, zero or false) if memory runs out.
template <class Result, class Work>
Result withPool(Work work) noexcept {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return Result{};
  return ob::catchExhaustion(Result{}, [&] {
    const auto look = sharedHost().beginLook();
    return work();
  });
}

// The same for work without a result.
template <class Work>
void inPool(Work work) noexcept {
  withPool<bool>([&] {
    work();
    return true;
  });
}

// Returns the model object behind a handle, borrowed, or null if the handle is of another kind.
template <class Model>
Model* modelOf(const void* handle) noexcept {
  // C clients hold const handles so that they cannot look inside. The object itself is not const.
  auto* object = static_cast<ob::Object*>(const_cast<void*>(handle));
  return dynamic_cast<Model*>(object);
}

// Runs the work with the model object behind the handle. Returns the failure value if the handle is
// null or of another kind.
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

// Returns the object as a C reference. Ownership: the caller releases it.
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

// Runs work(model, error) with the model object behind the handle and returns its result.
// Errors: stores the error of the work, if there is one, in *errorOut. If the handle is of another
// kind, stores that error in *wrongKindOut. Both may be null.
// Ownership: the caller releases the error. The pool's own reference to it ends with the pool.
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
