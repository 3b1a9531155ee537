// Between C references and objects. A C reference is always the address of the ob::Object base.
#pragma once

#include "runtime/collections.hpp"

namespace ob {

// The object behind a C reference where it is a T, borrowed; null otherwise.
template <class T>
const T* fromC(const void* reference) noexcept {
  const auto* object = static_cast<const Object*>(reference);
  if constexpr (std::is_same_v<T, Object>) {
    return object;
  } else {
    return as<T>(object);
  }
}

// The C reference of an object, of the opaque type that the C interface gives its kind.
template <class CRef>
CRef toC(const Object* object) noexcept {
  return static_cast<CRef>(static_cast<const void*>(object));
}

}  // namespace ob
