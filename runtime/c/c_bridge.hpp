// Conversions between C references and objects. A C reference is the address of the ob::Object
// base.
//
// Ownership: none of these functions takes or releases a reference.
#pragma once

#include "runtime/collections.hpp"

namespace ob {

// Returns the object behind a C reference, or null if the reference is null or the object is no T.
template <class T>
const T* fromC(const void* reference) noexcept {
  const auto* object = static_cast<const Object*>(reference);
  if constexpr (std::is_same_v<T, Object>) {
    return object;
  } else {
    return as<T>(object);
  }
}

// Does the same for the kinds that the C interface lets its callers change: queues and run loops.
template <class T>
T* fromC(void* reference) noexcept {
  return const_cast<T*>(fromC<T>(static_cast<const void*>(reference)));
}

// Returns the C reference of an object. CRef is the opaque type of its kind.
template <class CRef>
CRef toC(const Object* object) noexcept {
  return static_cast<CRef>(static_cast<const void*>(object));
}
template <class CRef>
CRef toC(Object* object) noexcept {
  return static_cast<CRef>(static_cast<void*>(object));
}

}  // namespace ob
