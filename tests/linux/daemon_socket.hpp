// The other end of a talk with multipathd: an abstract address, and a daemon that sends what it is
// told to send.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace tavrenix::test {

class DaemonSocket {
 public:
  DaemonSocket() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name_.copy(address.sun_path + 1, name_.size(), 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size());
    const auto* where = reinterpret_cast<const sockaddr*>(&address);
    if (::bind(listener_, where, length) != 0 || ::listen(listener_, 1) != 0) std::abort();
  }
  DaemonSocket(const DaemonSocket&) = delete;
  DaemonSocket& operator=(const DaemonSocket&) = delete;
  ~DaemonSocket() { ::close(listener_); }

  const std::string& name() const { return name_; }
  // Takes one command, which it returns, and sends the reply as it is: at once, or with a call
  // after each byte. waits: hangs up only after the other side has.
  std::string serve(std::string_view reply, bool waits,
                    const std::function<void()>& afterEachByte = {}) const {
    const int talk = ::accept(listener_, nullptr, nullptr);
    char buffer[1024];
    const ssize_t got = ::recv(talk, buffer, sizeof buffer, 0);
    const std::string command(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
    const std::size_t step = afterEachByte ? 1 : reply.size();
    for (; !reply.empty(); reply.remove_prefix(step)) {
      ::send(talk, reply.data(), step, MSG_NOSIGNAL);
      if (afterEachByte) afterEachByte();
    }
    if (waits) ::recv(talk, buffer, sizeof buffer, 0);
    ::close(talk);
    return command;
  }

 private:
  static inline int count_ = 0;
  const std::string name_ =
      "@tavrenix-test-" + std::to_string(::getpid()) + '-' + std::to_string(++count_);
  const int listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

}  // namespace tavrenix::test
