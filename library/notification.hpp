// The record behind a registration for notifications, and what both delivery forms share.
//
// Ownership: the record frees itself with its last reference. A dispatch-queue registration holds
// one until it is destroyed, the client's run-loop source holds one as long as it lives, and every
// task that runs a handler holds one while it waits and runs. The registry refers to the record
// without owning it: once it is gone, later events reach nobody.
// Threads: the reference count and the count of ports change atomically. mutex guards port,
// iterators and epoch; it may be held around operations of the registry, which call nobody, and
// never around a call of the client.
#pragma once

#include <tavrenix/mpio.h>

#include <array>
#include <atomic>
#include <mutex>

#include "model/errors.hpp"
#include "model/registry.hpp"
#include "runtime/weak.hpp"

struct MPIONotification {
  static constexpr std::uint32_t kMagic = 0x4D50494F;  // "MPIO"
  enum Kind : std::uint32_t { kDispatch = 1, kRunLoop = 2 };

  MPIONotification(Kind itsKind, std::uint32_t itsReferences)
      : kind(itsKind), references(itsReferences) {}

  const std::uint32_t magic = kMagic;  // the first word, so that any other memory can be refused
  const std::uint32_t kind;
  std::atomic<std::uint32_t> references;
  tavrenix::RegistryPort port = 0;
  std::array<tavrenix::RegistryHandle, 4> iterators{};  // as in registration.cpp; 0 where none
  MPIONotificationBlock* block = nullptr;               // of a dispatch-queue registration
  ob::Ref<ob::RunLoopSource> portSource;                // these four of a run-loop registration
  ObRunLoopSourceRef clientSource = nullptr;            // which owns the record, not the reverse
  MPIONotificationCallback callback = nullptr;
  void* context = nullptr;

  std::mutex mutex;
  // Counts the ends of registrations: whoever has seen another number works on iterators that are
  // no longer there.
  std::uint64_t epoch = 0;
  ob::WeakAnchor<MPIONotification> anchor{this};

  void retain() noexcept { references.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  bool tryRetain() noexcept;
};

namespace tavrenix {

// Ports made by either form, less the run-loop registrations cancelled: ending a dispatch-queue
// registration does not lower it, and nothing reads it. Kept as it is.
extern std::atomic<std::uint32_t> gMPIOActiveNotificationPorts;

// One of a record's iterators, in one registration of it.
struct NotificationIterator {
  std::size_t index;
  std::uint64_t epoch;
};

// The next object of the iterator, which the caller releases; 0 at its end, and once its
// registration has ended.
RegistryHandle nextObject(MPIONotification& record, NotificationIterator iterator);

// The registry's callbacks. They call the client for each object of the iterator that is known.
void MPIOHandleAppeared(MPIONotification& record, NotificationIterator iterator) noexcept;
void MPIOHandleDisappeared(MPIONotification& record, NotificationIterator iterator) noexcept;
using NotificationHandler = void (*)(MPIONotification&, NotificationIterator) noexcept;

struct NotificationFailure {
  std::string_view message;
  MPIOErrorCode code;
  std::optional<KernelStatus> result;
};

// Makes the four registrations of the record's port, and calls begin with the handler and the
// iterator after each: that is to run the handler over what is present, which the registry awaits
// before it tells of more. Stops at the first failure, leaving what was made, and also, without a
// failure, where begin has ended the registration.
using BeginNotifications = std::function<void(NotificationHandler, NotificationIterator)>;
std::optional<NotificationFailure> registerNotifications(MPIONotification& record,
                                                         const BeginNotifications& begin);
// Takes the registration out of the record: destroys the port and releases the iterators.
void endNotifications(MPIONotification& record);

}  // namespace tavrenix
