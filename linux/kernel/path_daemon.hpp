// The port to multipathd. The daemon watches paths, and undoes changes of them that other programs
// make.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "linux/kernel/device_mapper.hpp"
#include "linux/text/messages.hpp"

namespace tavrenix::sys {

class PathDaemon {
 public:
  virtual ~PathDaemon() = default;
  // Sends a command to the daemon and waits for the reply, for a bounded time.
  // Errors: -ENOENT if no daemon runs, -ETIMEDOUT if it does not answer in time, another negative
  // error number if the connection breaks.
  // Thread safety: any thread.
  virtual Answer<DaemonReply> ask(const std::string& command) = 0;
};

// The daemon of this machine, reached over a stream socket.
class MultipathdSocket final : public PathDaemon {
 public:
  // ask() tries the addresses in turn. One that begins with '@' is abstract. It skips an address on
  // which another user than `user` listens. `timeout` limits the connecting, the sending and the
  // receiving, each by itself.
  explicit MultipathdSocket(
      std::vector<std::string> addresses = {"@/org/kernel/linux/storage/multipathd",
                                            "/run/multipathd.socket"},
      std::chrono::milliseconds timeout = std::chrono::seconds(5), uid_t user = 0)
      : addresses_(std::move(addresses)), timeout_(timeout), user_(user) {}
  Answer<DaemonReply> ask(const std::string& command) override;

 private:
  std::vector<std::string> addresses_;
  std::chrono::milliseconds timeout_;
  uid_t user_;
};

}  // namespace tavrenix::sys
