#include "linux/event_source.hpp"

#include <linux/netlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "linux/uevent.hpp"

namespace tavrenix::sys {

namespace {

// Room for a burst of events while the listener is at work. More is granted to the superuser only.
constexpr int kRoom = 4 << 20;
// No event is longer: the kernel's are bounded at 2 kB and udev's properties at 16 kB.
constexpr std::size_t kLongestEvent = 32768;
// Who listens is not kept waiting by events that never stop.
constexpr int kMostAtOnce = 1000;

}  // namespace

bool isBelieved(const msghdr& message, uid_t user) {
  const auto* from = static_cast<const sockaddr_nl*>(message.msg_name);
  if (message.msg_namelen == sizeof *from && from->nl_family == AF_NETLINK) {
    const bool fromKernel = from->nl_pid == 0;
    const bool toUdevsGroup = from->nl_groups == static_cast<unsigned>(EventSource::Group::kUdev);
    if (!fromKernel && !toUdevsGroup) return false;
  }
  const cmsghdr* head = CMSG_FIRSTHDR(&message);
  if (head == nullptr || head->cmsg_type != SCM_CREDENTIALS) return false;
  ucred sender;
  std::memcpy(&sender, CMSG_DATA(head), sizeof sender);
  return sender.uid == user;
}

std::optional<EventSource> EventSource::open(Group group) {
  const int socket =
      ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
  if (socket < 0) return std::nullopt;
  EventSource source(socket);
  if (source.stop_ < 0) return std::nullopt;  // it could never be told to end
  if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &kRoom, sizeof kRoom) != 0) {
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &kRoom, sizeof kRoom);
  }
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = static_cast<unsigned>(group);
  if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return std::nullopt;
  }
  return source;
}

EventSource::EventSource(int socket, uid_t believed) noexcept
    : socket_(socket), believed_(believed), stop_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  const int yes = 1;
  ::setsockopt(socket_, SOL_SOCKET, SO_PASSCRED, &yes, sizeof yes);
}

EventSource::EventSource(EventSource&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)),
      believed_(other.believed_),
      stop_(std::exchange(other.stop_, -1)) {}

EventSource::~EventSource() {
  if (socket_ >= 0) ::close(socket_);
  if (stop_ >= 0) ::close(stop_);
}

void EventSource::stop() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(stop_, &one, sizeof one);
}

EventSource::Heard EventSource::wait(std::optional<std::chrono::milliseconds> patience) {
  bool changed = false;
  const int longest = patience ? static_cast<int>(patience->count()) : -1;
  for (int received = 0; received < kMostAtOnce;) {
    // Once there is a change, only what has come already is still taken along.
    pollfd files[] = {{socket_, POLLIN, 0}, {stop_, POLLIN, 0}};
    const int ready = ::poll(files, 2, changed ? 0 : longest);
    if (ready < 0 && errno != EINTR) return Heard::kBroken;
    if (files[1].revents != 0) return Heard::kStop;
    if (ready == 0) return changed ? Heard::kChange : Heard::kNothing;
    if (files[0].revents == 0) continue;
    const auto heard = receive();
    if (heard == Heard::kBroken) return Heard::kBroken;
    changed = changed || heard == Heard::kChange;
    if (changed) ++received;
  }
  return Heard::kChange;
}

std::optional<EventSource::Heard> EventSource::receive() {
  char buffer[kLongestEvent];
  iovec part{buffer, sizeof buffer};
  sockaddr_nl from{};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
  msghdr message{};
  message.msg_name = &from;
  message.msg_namelen = sizeof from;
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  const ssize_t length = ::recvmsg(socket_, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (length < 0) {
    if (errno == ENOBUFS) return Heard::kChange;  // events were lost: anything may have changed
    if (errno == EAGAIN || errno == EINTR) return std::nullopt;
    return Heard::kBroken;
  }
  // An event of no bytes has a sender; the end of a socket has none.
  if (length == 0 && CMSG_FIRSTHDR(&message) == nullptr) return Heard::kBroken;
  if (!isBelieved(message, believed_)) return std::nullopt;
  if ((message.msg_flags & MSG_TRUNC) != 0) return Heard::kChange;  // it may say anything
  const auto event = parseUevent({buffer, static_cast<std::size_t>(length)});
  if (!event || !concernsStorage(*event)) return std::nullopt;
  return Heard::kChange;
}

}  // namespace tavrenix::sys
