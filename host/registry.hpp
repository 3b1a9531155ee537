// The seam to the host's device registry: a tree of entries with IDs, classes and typed properties.
//
// Ownership: the caller of a function that returns a handle releases it exactly once.
// Errors: a status other than kSuccess is the host's own number. The library passes it on to the
// user and does not interpret it. Functions throw nothing but std::bad_alloc.
// Thread safety: every function may be called on any thread at any time.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "runtime/collections.hpp"
#include "runtime/dispatch_queue.hpp"
#include "runtime/result.hpp"
#include "runtime/run_loop.hpp"

namespace tavrenix {

using ob::Result;

// Refers to an entry or to an iterator. 0 refers to nothing.
using RegistryHandle = std::uint32_t;
// Refers to a notification port. 0 refers to nothing.
using RegistryPort = std::uint32_t;
using EntryID = std::uint64_t;
using KernelStatus = std::int32_t;
inline constexpr KernelStatus kSuccess = 0;

// Bits of the iteration options. Without kIterateParents an iteration yields children.
inline constexpr std::uint32_t kIterateRecursively = 1;
inline constexpr std::uint32_t kIterateParents = 2;

using NotificationDelivery = std::function<void(RegistryHandle iterator)>;

class MPIODeviceRegistry {
 public:
  virtual ~MPIODeviceRegistry() = default;

  // Returns the first entry with that ID, or 0.
  virtual RegistryHandle findServiceByEntryID(EntryID entryID) = 0;
  // Returns an iterator over all entries with that ID, which may be none.
  virtual Result<RegistryHandle> findServicesByEntryID(EntryID entryID) = 0;
  // Returns an iterator over all entries whose class is className or derives from it.
  virtual Result<RegistryHandle> findServicesByClass(std::string_view className) = 0;

  // Returns a snapshot of all properties of the entry.
  virtual Result<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) = 0;
  // Returns the property of that name, or null.
  virtual ob::Ref<const ob::Object> copyProperty(RegistryHandle entry, const ob::String& name) = 0;
  // Returns the property of the entry itself. If the entry has none of that name, returns that of
  // the first relative that has one, or null. `options` choose the relatives.
  virtual ob::Ref<const ob::Object> searchProperty(RegistryHandle entry, std::string_view plane,
                                                   const ob::String& name,
                                                   std::uint32_t options) = 0;
  // Hands the value to the driver of the entry and returns the driver's answer.
  virtual KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                                   const ob::Object& value) = 0;

  // Returns an iterator over the relatives that `options` choose. Each occurs once.
  virtual Result<RegistryHandle> createIterator(RegistryHandle entry, std::string_view plane,
                                                std::uint32_t options) = 0;
  // Returns the next entry, or 0 at the end.
  virtual RegistryHandle iteratorNext(RegistryHandle iterator) = 0;

  // Returns true if the entry's class is className or derives from it.
  virtual bool conformsTo(RegistryHandle entry, std::string_view className) = 0;
  virtual Result<EntryID> getEntryID(RegistryHandle entry) = 0;
  // Gives the handle of an entry or an iterator back. Ignores 0.
  virtual void release(RegistryHandle handle) = 0;

  // Arrivals and departures are queued in the iterator of a registration. When the first is queued,
  // the port calls the registration's `deliver`. It calls again only after the client has read the
  // iterator to its end, which arms the registration. The calls are made on the queue or in the run
  // loop that the port is bound to, never within a function of this class.

  // Returns a port that is bound to nothing yet, or 0 if there can be none.
  // Ownership: the caller destroys the port.
  virtual RegistryPort createNotificationPort() = 0;
  // Binds the port to a queue, where its calls become tasks.
  virtual void setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) = 0;
  // Binds the port to a run-loop source, where its calls are made when the source is performed.
  // Returns the same source at every call, or null if there can be none.
  virtual ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) = 0;
  // Destroys the port. Afterwards no call of `deliver` begins, except one that another thread has
  // already taken off the queue. The iterators of its registrations stay until they are released.
  // Ignores 0.
  virtual void destroyNotificationPort(RegistryPort port) = 0;
  // Returns the dictionary that stands for the class in a registration, or null.
  virtual ob::Ref<const ob::Dictionary> classMatching(std::string_view className) = 0;
  // Registers for arrivals (kind registry::kFirstMatchNotification) or departures
  // (registry::kTerminateNotification) of entries of the class that `matching` stands for. Returns
  // the registration's iterator. It starts unarmed: the client reads it to its end first. For
  // arrivals it holds all entries that are present. The registration, and `deliver` with it, lasts
  // until the iterator is released.
  virtual Result<RegistryHandle> addMatchingNotification(RegistryPort port, std::string_view kind,
                                                         ob::Ref<const ob::Dictionary> matching,
                                                         NotificationDelivery deliver) = 0;
};

// Releases a handle at the end of its scope.
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
  // Returns the handle and leaves its release to the caller.
  [[nodiscard]] RegistryHandle detach() noexcept { return std::exchange(handle_, 0); }
  explicit operator bool() const noexcept { return handle_ != 0; }

 private:
  MPIODeviceRegistry& registry_;
  RegistryHandle handle_;
};

}  // namespace tavrenix
