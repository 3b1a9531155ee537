// Changes of storage, as the kernel announces them by device events (uevents).
//
// An event says only that something may have changed. The listener thread then reads the machine
// anew, and so misses nothing if events were lost.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>

#include "linux/kernel/files.hpp"
#include "runtime/posix.hpp"

namespace tavrenix::sys {

// Returns true if the sender of a message is to be trusted. Its credentials must be those of
// `user`. A netlink message must come from the kernel itself or go to udevd's group. REQUIRES: the
// message was received with its sender's address and credentials.
bool isTrustedSender(const msghdr& message, uid_t user);

// A source of events, which receives each event up to twice. The kernel sends it first. If udevd
// runs, it sends the event again after its rules have run, and only then are links and labels
// there. So the kernel's event counts only if udevd does not send it again in time, because it was
// stopped or killed.
//
// Thread safety: one thread waits; stop() may be called on any thread.
class EventSource {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Group : unsigned { kKernel = 1, kUdev = 2 };  // netlink groups
  enum class WaitResult { kChange, kNothing, kStop, kBroken };

  // How long an event of the kernel waits for udevd to send it again.
  static constexpr std::chrono::milliseconds kUdevTimeout{2000};

  // Returns kUdev if udevd runs or has run.
  static Group groupOf(const HostFiles& files) {
    return files.exists("/run/udev/control") ? Group::kUdev : Group::kKernel;
  }
  // Returns a source that listens from now on: to the kernel, and also to udevd if `group` is
  // kUdev. Returns std::nullopt if the kernel refuses.
  static std::optional<EventSource> open(Group group);
  // Listens on datagram sockets of the caller, and trusts only messages of the user `trustedUser`.
  // Without `udev`, events of `kernel` count at once.
  explicit EventSource(ob::FileDescriptor kernel, ob::FileDescriptor udev = {},
                       uid_t trustedUser = 0,
                       std::chrono::milliseconds udevTimeout = kUdevTimeout) noexcept;
  EventSource(EventSource&&) noexcept = default;

  // Waits until storage may have changed (kChange), until stop() was called (kStop), until a socket
  // failed (kBroken), or until `timeout` has passed (kNothing). All events that have come by then
  // are one change, and so are events that were lost because too many came.
  WaitResult wait(std::optional<std::chrono::milliseconds> timeout = std::nullopt);
  // Ends the current wait and all later ones.
  void stop() noexcept;

 private:
  enum class Received { kNothing, kOther, kStorage, kLost, kBroken };
  struct Event {
    Received what;
    std::uint64_t number = 0;  // the kernel's number of the event
  };
  Event receive(int socket) const;
  WaitResult takeFromKernel();
  WaitResult takeFromUdev();
  int untilOverdue(std::optional<Clock::time_point> end) const;
  bool dropOverdue();

  ob::FileDescriptor kernel_;
  ob::FileDescriptor udev_;
  ob::FileDescriptor stop_;
  uid_t trustedUser_;
  std::chrono::milliseconds udevTimeout_;
  // The kernel's events that udevd has not sent again: the time until which each waits, by its
  // number.
  std::map<std::uint64_t, Clock::time_point> waiting_;
};

}  // namespace tavrenix::sys
