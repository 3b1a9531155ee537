// The seam to the host's device registry: a tree of entries with IDs, classes and typed properties.
//
// Ownership: every handle that an operation returns, of an entry or of an iterator, is released
// exactly once by its receiver with release(). Values returned are the receiver's own. Errors:
// nothing is thrown (but std::bad_alloc). A status of 0 is success; any other is the host's own
// number, passed through and interpreted nowhere.
// Threads: every operation may be called on any thread at any time.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "runtime/collections.hpp"
#include "runtime/dispatch_queue.hpp"
#include "runtime/run_loop.hpp"

namespace tavrenix {

// A reference to an entry or to an iterator; 0 is none.
using RegistryHandle = std::uint32_t;
// A notification port; 0 is none.
using RegistryPort = std::uint32_t;
using EntryID = std::uint64_t;
using KernelStatus = std::int32_t;
inline constexpr KernelStatus kSuccess = 0;

// Bits of the iteration options.
inline constexpr std::uint32_t kIterateRecursively = 1;
inline constexpr std::uint32_t kIterateParents = 2;

// value holds something only where status is kSuccess.
template <class T>
struct RegistryResult {
  KernelStatus status = kSuccess;
  T value{};
};

using NotificationDelivery = std::function<void(RegistryHandle iterator)>;

class MPIODeviceRegistry {
 public:
  virtual ~MPIODeviceRegistry() = default;

  // The first entry with that ID, or 0.
  virtual RegistryHandle findServiceByEntryID(EntryID entryID) = 0;
  // An iterator over all entries with that ID. No such entry: an iterator at its end.
  virtual RegistryResult<RegistryHandle> findServicesByEntryID(EntryID entryID) = 0;
  // An iterator over all entries whose class is className or derives from it.
  virtual RegistryResult<RegistryHandle> findServicesByClass(std::string_view className) = 0;

  // A snapshot of all properties of the entry.
  virtual RegistryResult<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) = 0;
  // The property of that name, or none.
  virtual ob::Ref<const ob::Object> copyProperty(RegistryHandle entry, const ob::String& name) = 0;
  // The property on the entry itself or, as options say, on the nearest of its relatives that has
  // it; or none.
  virtual ob::Ref<const ob::Object> searchProperty(RegistryHandle entry, std::string_view plane,
                                                   const ob::String& name,
                                                   std::uint32_t options) = 0;
  // Hands value to whoever acts on writes of that property, and returns its answer.
  virtual KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                                   const ob::Object& value) = 0;

  // An iterator over the relatives that options choose. Each is met once, children in their order.
  virtual RegistryResult<RegistryHandle> createIterator(RegistryHandle entry,
                                                        std::string_view plane,
                                                        std::uint32_t options) = 0;
  // The next entry, or 0 at the end.
  virtual RegistryHandle iteratorNext(RegistryHandle iterator) = 0;

  // Whether the entry's class is className or derives from it.
  virtual bool conformsTo(RegistryHandle entry, std::string_view className) = 0;
  virtual RegistryResult<EntryID> getEntryID(RegistryHandle entry) = 0;
  // Gives the handle of an entry or iterator back. 0 is ignored.
  virtual void release(RegistryHandle handle) = 0;

  // Arrivals and departures. They wait in the iterator of a registration; deliver is called when
  // there are some and, after that, only once the iterator has been read to its end, which arms it.
  // Calls to deliver are made where the port is bound to, never within an operation.

  // A port, bound to nothing yet, which the receiver destroys; 0 where there can be none.
  virtual RegistryPort createNotificationPort() = 0;
  // Binds the port to a queue: its calls are tasks there.
  virtual void setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) = 0;
  // Binds the port to a run-loop source, the same at every call: its calls are made where that is
  // performed. None where there can be none.
  virtual ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) = 0;
  // No call begins after this has returned, except one that another thread has already taken up.
  // Iterators of the port's registrations stay, to be released by who has them. 0 is ignored.
  virtual void destroyNotificationPort(RegistryPort port) = 0;
  // What stands for the class in a registration; or none.
  virtual ob::Ref<const ob::Dictionary> classMatching(std::string_view className) = 0;
  // Registers for registry::kFirstMatchNotification or kTerminateNotification of entries that
  // matching stands for, which it takes over. The iterator starts unarmed, and for first match it
  // holds all entries that are present. deliver is kept, and the registration lasts, until the
  // iterator is released.
  virtual RegistryResult<RegistryHandle> addMatchingNotification(
      RegistryPort port, std::string_view kind, ob::Ref<const ob::Dictionary> matching,
      NotificationDelivery deliver) = 0;
};

// A handle that is released on every way out.
class ScopedHandle {
 public:
  ScopedHandle(MPIODeviceRegistry& registry, RegistryHandle handle) noexcept
      : registry_(registry), handle_(handle) {}
  ScopedHandle(const ScopedHandle&) = delete;
  ScopedHandle& operator=(const ScopedHandle&) = delete;
  ~ScopedHandle() {
    if (handle_ != 0) registry_.release(handle_);
  }
  RegistryHandle get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return handle_ != 0; }

 private:
  MPIODeviceRegistry& registry_;
  RegistryHandle handle_;
};

}  // namespace tavrenix
