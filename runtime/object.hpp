// The base of every object: an intrusive, atomic reference count and a type ID.
//
// Ownership: an object starts with one reference, owned by its maker. Ref<T> makes ownership
// visible in types; raw pointers borrow. Raw owning pointers appear only at the C interface.
// Threads: references may be taken and given back on any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace ob {

using TypeID = std::uintptr_t;

// Fixed IDs of the runtime's own classes; those of registered classes follow.
enum BuiltinType : TypeID {
  kNoType = 0,
  kStringType,
  kNumberType,
  kBooleanType,
  kDataType,
  kDateType,
  kArrayType,
  kDictionaryType,
  kErrorType,
  kWeakCellType,
  kDispatchQueueType,
  kRunLoopType,
  kRunLoopSourceType,
  kFirstRegisteredType,
};

// A type ID that no other class has. Never fails; any thread.
TypeID registerClass();

class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  virtual TypeID typeID() const noexcept = 0;
  // Same kind and same value; identity unless a class says otherwise.
  virtual bool equals(const Object& other) const noexcept { return this == &other; }

  void retain() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  // Gives a reference back; the last one destroys the object on this thread.
  void release() const noexcept;
  // Takes a reference unless the object is already being destroyed.
  bool tryRetain() const noexcept;

  // References held now: for tests, on objects that no other thread touches.
  std::uint32_t retainCount() const noexcept { return count_.load(std::memory_order_relaxed); }

 protected:
  struct Immortal {};
  constexpr Object() noexcept = default;
  // For constants: so many references that giving one back never ends them.
  constexpr explicit Object(Immortal) noexcept : count_(kImmortalCount) {}
  virtual ~Object() = default;

 private:
  static constexpr std::uint32_t kImmortalCount = 0x4000'0000;
  mutable std::atomic<std::uint32_t> count_{1};
};

// An owned reference, possibly none.
template <class T>
class Ref {
 public:
  constexpr Ref() noexcept = default;
  constexpr Ref(std::nullptr_t) noexcept {}
  Ref(const Ref& other) noexcept : object_(other.object_) { retainHeld(); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
  noexcept : object_(other.get()) { retainHeld(); }
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.detach()) {}
  ~Ref() {
    if (object_ != nullptr) object_->release();
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Takes over the caller's reference.
  static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  // Takes a reference of its own to a borrowed object.
  static Ref retain(T* object) noexcept {
    if (object != nullptr) object->retain();
    return adopt(object);
  }
  // Hands the reference to the caller.
  [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }

 private:
  void retainHeld() const noexcept {
    if (object_ != nullptr) object_->retain();
  }
  T* object_ = nullptr;
};

template <class T, class... Args>
Ref<T> make(Args&&... args) {
  return Ref<T>::adopt(new T(std::forward<Args>(args)...));
}

// Ends the process with one line on standard error: for states that must not go on.
[[noreturn]] void fatal(std::string_view message) noexcept;

}  // namespace ob
