#include "linux/kernel/path_daemon.hpp"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>

#include "runtime/posix.hpp"

namespace tavrenix::sys {

namespace {

constexpr std::size_t kLongestReply = 65536;

// One connection. A signal interrupts system calls with a time limit, even if its handler asks for
// restarts. The exchange then goes on, and takes at most twice the limit.
class Connection {
 public:
  explicit Connection(std::chrono::milliseconds timeout)
      : timeout_(timeout), socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
    const std::chrono::microseconds rest = timeout - seconds;
    const timeval limit{seconds.count(), rest.count()};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  }

  bool connect(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (!socket_ || name.size() >= sizeof address.sun_path) {
      errno = !socket_ ? EMFILE : ENAMETOOLONG;
      return false;
    }
    std::memcpy(address.sun_path, name.data(), name.size());
    const bool abstract = name.starts_with('@');
    if (abstract) address.sun_path[0] = '\0';
    // An abstract name has no zero byte at its end: that would be one more byte of the name.
    const std::size_t length = offsetof(sockaddr_un, sun_path) + name.size() + (abstract ? 0 : 1);
    const auto end = Clock::now() + timeout_;
    int result = 0;
    do {
      result = ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address),
                         static_cast<socklen_t>(length));
    } while (result != 0 && errno == EINTR && Clock::now() < end);
    return result == 0;
  }
  // Returns true if that user opened the address, as the kernel has recorded.
  bool belongsTo(uid_t user) const {
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(socket_.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
           peer.uid == user;
  }
  // The kernel has room for a whole command, so this does not wait.
  bool send(const std::string& bytes) {
    return ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
  }
  bool receive(char* bytes, std::size_t length) {
    const auto end = Clock::now() + timeout_;
    while (length > 0) {
      const ssize_t got = ::recv(socket_.get(), bytes, length, MSG_WAITALL);
      if (got == 0) errno = ECONNRESET;
      if (got == 0 || (got < 0 && errno != EINTR)) return false;
      const auto taken = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
      bytes += taken;
      length -= taken;
      if (length > 0 && Clock::now() >= end) {
        errno = EAGAIN;
        return false;
      }
    }
    return true;
  }

 private:
  using Clock = std::chrono::steady_clock;
  std::chrono::milliseconds timeout_;
  ob::FileDescriptor socket_;
};

int lastError() {
  return errno == EAGAIN || errno == EWOULDBLOCK ? -ETIMEDOUT : -errno;
}

Answer<DaemonReply> talk(Connection& socket, const std::string& frame) {
  if (!socket.send(frame)) return {lastError(), {}};
  std::size_t length = 0;
  if (!socket.receive(reinterpret_cast<char*>(&length), sizeof length)) return {lastError(), {}};
  if (length > kLongestReply) return {-EMSGSIZE, {}};
  std::string reply(length, '\0');
  if (!socket.receive(reply.data(), reply.size())) return {lastError(), {}};
  return {0, parseDaemonReply(reply)};
}

}  // namespace

Answer<DaemonReply> MultipathdSocket::ask(const std::string& command) {
  const auto frame = frameDaemonCommand(command);
  if (!frame) return {-EMSGSIZE, {}};
  for (const auto& address : addresses_) {
    Connection socket(timeout_);
    if (socket.connect(address)) {
      // Any user may take an abstract address that the daemon has not taken.
      if (!socket.belongsTo(user_)) continue;
      return talk(socket, *frame);
    }
    // These two errors mean that no process listens there. The caller gets any other error.
    if (errno != ECONNREFUSED && errno != ENOENT) return {lastError(), {}};
  }
  return {-ENOENT, {}};
}

}  // namespace tavrenix::sys
