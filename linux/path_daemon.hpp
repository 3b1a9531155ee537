// The port to multipathd, which watches paths and undoes what is done to them behind its back.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "linux/daemon_reply.hpp"
#include "linux/device_mapper.hpp"

namespace tavrenix::sys {

class PathDaemon {
 public:
  virtual ~PathDaemon() = default;
  // Carries the command to the daemon and waits for its reply, for a bounded time. -ENOENT where no
  // daemon runs, -ETIMEDOUT where it runs and does not answer in time, another negative error
  // number where the talk breaks off. Any thread.
  virtual Answer<DaemonReply> ask(const std::string& command) = 0;
};

// The daemon behind a stream socket.
class MultipathdSocket final : public PathDaemon {
 public:
  // Addresses to try in turn; one that begins with '@' is abstract. What another user than that one
  // listens on is passed over, as if nobody did. patience bounds each of connecting, sending and
  // receiving.
  explicit MultipathdSocket(
      std::vector<std::string> addresses = {"@/org/kernel/linux/storage/multipathd",
                                            "/run/multipathd.socket"},
      std::chrono::milliseconds patience = std::chrono::seconds(5), uid_t user = 0)
      : addresses_(std::move(addresses)), patience_(patience), user_(user) {}
  Answer<DaemonReply> ask(const std::string& command) override;

 private:
  std::vector<std::string> addresses_;
  std::chrono::milliseconds patience_;
  uid_t user_;
};

}  // namespace tavrenix::sys
