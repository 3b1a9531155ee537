#include "linux/kernel/event_source.hpp"

#include <linux/netlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "linux/text/messages.hpp"
#include "linux/text/words.hpp"

namespace tavrenix::sys {

namespace {

using Clock = EventSource::Clock;

// Room, in bytes, for events that come while the listener works. Only the superuser may have so
// much.
constexpr int kRoom = 4 << 20;
// Longer than any event, in bytes: the kernel's have at most 2 kB and udevd's properties at most 16
// kB.
constexpr std::size_t kLongestEvent = 32768;
// A wait ends after so many events even if more keep coming.
constexpr int kMostAtOnce = 1000;

// Makes the kernel attach the credentials of its sender to each message.
void askForSenders(const ob::FileDescriptor& socket) {
  const int yes = 1;
  if (socket) ::setsockopt(socket.get(), SOL_SOCKET, SO_PASSCRED, &yes, sizeof yes);
}

ob::FileDescriptor openSocket(EventSource::Group group) {
  ob::FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT));
  if (!socket) return socket;
  if (::setsockopt(socket.get(), SOL_SOCKET, SO_RCVBUFFORCE, &kRoom, sizeof kRoom) != 0) {
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVBUF, &kRoom, sizeof kRoom);
  }
  askForSenders(socket);  // before the first event can come
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = static_cast<unsigned>(group);
  const auto* where = reinterpret_cast<const sockaddr*>(&address);
  if (::bind(socket.get(), where, sizeof address) != 0) return {};
  return socket;
}

}  // namespace

bool isTrustedSender(const msghdr& message, uid_t user) {
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
  auto kernel = openSocket(Group::kKernel);
  ob::FileDescriptor udev;
  if (group == Group::kUdev) udev = openSocket(Group::kUdev);
  if (!kernel || (group == Group::kUdev && !udev)) return std::nullopt;
  EventSource source(std::move(kernel), std::move(udev));
  if (!source.stop_) return std::nullopt;  // stop() would have no way to end a wait
  return source;
}

EventSource::EventSource(ob::FileDescriptor kernel, ob::FileDescriptor udev, uid_t trustedUser,
                         std::chrono::milliseconds udevTimeout) noexcept
    : kernel_(std::move(kernel)),
      udev_(std::move(udev)),
      stop_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      trustedUser_(trustedUser),
      udevTimeout_(udevTimeout) {
  askForSenders(kernel_);
  askForSenders(udev_);
}

void EventSource::stop() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(stop_.get(), &one, sizeof one);
}

EventSource::WaitResult EventSource::wait(std::optional<std::chrono::milliseconds> timeout) {
  std::optional<Clock::time_point> end;
  if (timeout) end = Clock::now() + *timeout;
  bool changed = false;
  for (int taken = 0; taken < kMostAtOnce; taken += changed ? 1 : 0) {
    // After the first change, takes only events that are there already, without waiting.
    pollfd files[] = {
        {stop_.get(), POLLIN, 0}, {kernel_.get(), POLLIN, 0}, {udev_.get(), POLLIN, 0}};
    const int ready = ::poll(files, 3, changed ? 0 : untilOverdue(end));
    if (ready < 0 && errno != EINTR) return WaitResult::kBroken;
    if (ready < 0) continue;
    if (files[0].revents != 0) return WaitResult::kStop;
    auto result = WaitResult::kNothing;
    // Reads the kernel's socket first: an event must be known before udevd's copy of it is read.
    if (files[1].revents != 0) {
      result = takeFromKernel();
    } else if (files[2].revents != 0) {
      result = takeFromUdev();
    } else if (changed) {
      return WaitResult::kChange;
    }
    if (result == WaitResult::kBroken) return result;
    changed = dropOverdue() || changed || result == WaitResult::kChange;
    if (!changed && end && Clock::now() >= *end) return WaitResult::kNothing;
  }
  return WaitResult::kChange;
}

EventSource::WaitResult EventSource::takeFromKernel() {
  const auto [what, number] = receive(kernel_.get());
  if (what == Received::kBroken) return WaitResult::kBroken;
  if (what == Received::kLost) return WaitResult::kChange;
  if (what != Received::kStorage) return WaitResult::kNothing;
  if (!udev_) return WaitResult::kChange;
  waiting_.emplace(number, Clock::now() + udevTimeout_);
  return WaitResult::kNothing;
}

EventSource::WaitResult EventSource::takeFromUdev() {
  const auto [what, number] = receive(udev_.get());
  if (what == Received::kBroken) return WaitResult::kBroken;
  if (what == Received::kLost) return WaitResult::kChange;
  if (what != Received::kStorage) return WaitResult::kNothing;
  waiting_.erase(number);
  return WaitResult::kChange;
}

// Returns the milliseconds until an event has waited for udevd too long or `end` comes, whichever
// is first. Returns -1 if there is no such time.
int EventSource::untilOverdue(std::optional<Clock::time_point> end) const {
  auto next = end;
  // Events are numbered as they come, so the first has waited longest.
  if (!waiting_.empty())
    next = std::min(next.value_or(Clock::time_point::max()), waiting_.begin()->second);
  if (!next) return -1;
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now());
  return static_cast<int>(std::max(rest.count(), std::chrono::milliseconds::rep{0}));
}

// Returns true if an event has waited for udevd too long. Then drops all that wait: one look at the
// machine makes up for all of them.
bool EventSource::dropOverdue() {
  if (waiting_.empty() || Clock::now() < waiting_.begin()->second) return false;
  waiting_.clear();
  return true;
}

EventSource::Event EventSource::receive(int socket) const {
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
  const ssize_t length = ::recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (length < 0) {
    if (errno == ENOBUFS) return {Received::kLost};
    if (errno == EAGAIN || errno == EINTR) return {Received::kNothing};
    return {Received::kBroken};
  }
  // An empty event has a sender, but the end of a socket has none.
  if (length == 0 && CMSG_FIRSTHDR(&message) == nullptr) return {Received::kBroken};
  if (!isTrustedSender(message, trustedUser_)) return {Received::kOther};
  if ((message.msg_flags & MSG_TRUNC) != 0) return {Received::kLost};  // cut: it may be any event
  const auto event = parseUevent({buffer, static_cast<std::size_t>(length)});
  if (!event || !concernsStorage(*event)) return {Received::kOther};
  return {Received::kStorage, parseNumber(event->value("SEQNUM")).value_or(0)};
}

}  // namespace tavrenix::sys
