// The record behind a client's registration for notifications, and the code that the two forms of
// delivery (dispatch queue and run loop) share.
//
// Ownership: a record is freed with its last reference. A registration on a dispatch queue holds
// one until it is destroyed. A run-loop source holds one as long as it lives. A task that runs a
// handler holds one until it has run. The registry holds none: it drops the events of a freed
// record.
// Thread safety: every function may be called on any thread. Functions of the registry may be
// called under the mutex, because they call no client. The client is never called under it.
#pragma once

#include <tavrenix/mpio.h>

#include <array>
#include <atomic>
#include <functional>
#include <optional>

#include "host/registry.hpp"
#include "model/errors.hpp"
#include "runtime/mutex.hpp"
#include "runtime/weak.hpp"

struct MPIONotification {
  using Iterators = std::array<tavrenix::RegistryHandle, 4>;

  explicit MPIONotification(std::uint32_t itsReferences) : references(itsReferences) {}
  void retain() noexcept { references.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  // Takes a reference and returns true. Returns false if the last reference is gone.
  bool tryRetain() noexcept;

  std::atomic<std::uint32_t> references;
  ob::Mutex mutex;
  tavrenix::RegistryPort port OB_GUARDED_BY(mutex) = 0;
  // For arrivals of units, departures of units, arrivals of paths, departures of paths. 0 if there
  // is none yet.
  Iterators iterators OB_GUARDED_BY(mutex){};
  // The number of registrations of this record that have ended. A handler keeps the number of its
  // registration. If it has changed since, the handler's iterators have been released and must not
  // be used.
  std::uint64_t epoch OB_GUARDED_BY(mutex) = 0;
  // Only for a registration on a dispatch queue.
  MPIONotificationBlock* block = nullptr;
  MPIONotification* nextRegistered = nullptr;  // the list of all that are not destroyed
  // Only for a registration on a run loop.
  ob::Ref<ob::RunLoopSource> portSource OB_GUARDED_BY(mutex);
  MPIONotificationCallback callback = nullptr;
  void* context = nullptr;

  ob::WeakAnchor<MPIONotification> anchor{this};
};

namespace tavrenix {

// The number of ports made in either form, less the cancelled run-loop registrations. On purpose
// the end of a dispatch-queue registration does not lower it. Nothing reads it.
extern std::atomic<std::uint32_t> gMPIOActiveNotificationPorts;

// Names an iterator of a record: its index, and the epoch of the registration that it belongs to.
struct NotificationIterator {
  std::size_t index;
  std::uint64_t epoch;
};

// Returns the next entry of the iterator. Returns 0 at the end, and if the registration has ended.
// Ownership: the caller releases the entry.
RegistryHandle nextObject(MPIONotification& record, NotificationIterator iterator);

// The handlers that the registry calls. They call the client for each entry of the iterator that
// the manager knows.
void MPIOHandleAppeared(MPIONotification& record, NotificationIterator iterator) noexcept;
void MPIOHandleDisappeared(MPIONotification& record, NotificationIterator iterator) noexcept;
using NotificationHandler = void (*)(MPIONotification&, NotificationIterator) noexcept;

struct NotificationFailure {
  std::string_view message;
  MPIOErrorCode code;
  std::optional<KernelStatus> result;
};

// Makes the four registrations of the record's port. Calls `begin` after each. `begin` runs the
// handler, at once or in a task, so that it reads the iterator to its end: only then does the
// registry deliver. Stops at the first failure, returns it, and leaves the earlier registrations.
// Stops without a failure if a call of the client in `begin` has ended the registration.
using BeginNotifications = std::function<void(NotificationHandler, NotificationIterator)>;
std::optional<NotificationFailure> registerNotifications(MPIONotification& record,
                                                         const BeginNotifications& begin);
// Ends the registration: destroys the port and releases the iterators.
void endNotifications(MPIONotification& record);

}  // namespace tavrenix
