// The base class of every object: an atomic reference count inside the object, and a type ID.
//
// Ownership: a new object has one reference, which its maker owns. A Ref<T> owns a reference, a raw
// pointer borrows. Only the C interface hands out raw pointers that own.
// Thread safety: references may be taken and released on any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace ob {

using TypeID = std::uintptr_t;

// The IDs of the runtime's own classes. Registered classes get the IDs after them.
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

// Returns a type ID that no other class has. Never fails. Thread safety: any thread.
TypeID registerClass();

class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  virtual TypeID typeID() const noexcept = 0;
  // Returns true for an object of the same kind and value. A class that does not override this
  // has objects that are equal only to themselves.
  virtual bool equals(const Object& other) const noexcept { return this == &other; }

  void retain() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  // Releases one reference. Releasing the last one destroys the object, on this thread.
  void release() const noexcept;
  // Takes a reference and returns true. Returns false if the object is being destroyed already.
  bool tryRetain() const noexcept;

  // Returns the number of references. For tests, on objects that no other thread uses.
  std::uint32_t retainCount() const noexcept { return count_.load(std::memory_order_relaxed); }

 protected:
  struct Immortal {};
  constexpr Object() noexcept = default;
  // Makes a constant: it starts with so many references that releases never reach the last one.
  constexpr explicit Object(Immortal) noexcept : count_(kImmortalCount) {}
  virtual ~Object() = default;

 private:
  static constexpr std::uint32_t kImmortalCount = 0x4000'0000;
  mutable std::atomic<std::uint32_t> count_{1};
};

// An owned reference to an object, or none.
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

  // Returns a Ref for a reference that exists already. Ownership: takes over the caller's
  // reference.
  static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  // Returns a Ref with one more reference to a borrowed object, or none for null.
  static Ref retain(T* object) noexcept {
    if (object != nullptr) object->retain();
    return adopt(object);
  }
  // Returns the object and becomes empty. Ownership: the caller takes over the reference.
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

// Storage for an object that exists before any code runs and is never destroyed: threads and exit
// handlers of the client may use it until the process ends.
template <class T>
union Constant {
  template <class... Args>
  constexpr explicit Constant(Args... args) noexcept : object(args...) {}
  ~Constant() {}
  T object;
};

// Prints the message to standard error and aborts the process. Called if going on could damage
// something.
[[noreturn]] void fatal(std::string_view message) noexcept;

}  // namespace ob
