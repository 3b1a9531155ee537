// Hears of changes of storage: device events from the kernel, after udev's rules where udevd runs.
//
// What an event says is not used, only that there was one: whoever listens looks at the machine
// anew, and so misses nothing when events were lost.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <chrono>
#include <optional>

#include "linux/files.hpp"

namespace tavrenix::sys {

// Whether a message, received with its sender's address and credentials, comes from that user; in
// the kernel's group, from the kernel itself; and was sent to a group.
bool isBelieved(const msghdr& message, uid_t user);

class EventSource {
 public:
  // Events are sent twice: raw by the kernel (group 1), and by udevd once its rules have run and
  // links and labels are there (group 2), which is what to listen to where udevd runs.
  enum class Group : unsigned { kKernel = 1, kUdev = 2 };
  static Group groupOf(const HostFiles& files) {
    return files.exists("/run/udev/control") ? Group::kUdev : Group::kKernel;
  }

  // Listens from now on. Nothing where the kernel does not let us.
  static std::optional<EventSource> open(Group group);
  // Over a datagram socket that somebody else sends on; it is closed with this object. Only what
  // that user sends is believed.
  explicit EventSource(int socket, uid_t believed = 0) noexcept;
  EventSource(EventSource&& other) noexcept;
  EventSource& operator=(EventSource&&) = delete;
  EventSource(const EventSource&) = delete;
  ~EventSource();

  enum class Heard { kChange, kNothing, kStop, kBroken };
  // Waits until storage may have changed, until stop() has been called, or, as kNothing, until
  // nothing has come for so long. All events that have come by then are one change; so are events
  // that were lost because too many came.
  Heard wait(std::optional<std::chrono::milliseconds> patience = std::nullopt);
  // Ends the wait under way and all later ones. Any thread.
  void stop() noexcept;

 private:
  // Reads one event. Nothing where there is none to read.
  std::optional<Heard> receive();

  int socket_;
  uid_t believed_;
  int stop_;
};

}  // namespace tavrenix::sys
