// Events of devices, any datagram: read within their bounds, alike in the kernel's form and in
// udev's, and the listener hears of those alone that concern storage.
#include "linux/uevent.hpp"

#include <sys/socket.h>
#include <unistd.h>

#include "fuzz/promise.hpp"
#include "linux/event_source.hpp"
#include "tests/linux/udev_message.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

void expectBounded(const Uevent& event, std::size_t size) {
  expect(event.properties.size() <= 1024, "the number of properties is bounded");
  std::size_t total = 0;
  for (const auto& [name, value] : event.properties) {
    total += name.size() + 1 + value.size() + 1;
    expect(name.find_first_of(std::string_view("=\0", 2)) == std::string::npos &&
               value.find('\0') == std::string::npos,
           "a property ends where it does");
  }
  expect(total <= size, "nothing is read twice");
}

void expectAlike(std::string_view properties) {
  using namespace std::string_view_literals;
  const auto kernels = parseUevent(std::string("change@/x\0"sv).append(properties));
  const auto udevs = parseUevent(tavrenix::test::udevMessage(properties));
  expect(kernels.has_value() == udevs.has_value() &&
             (!kernels || kernels->properties == udevs->properties),
         "both forms of an event tell the same");
}

void expectHeard(std::string_view message, bool concerns) {
  int pair[2];
  expect(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) == 0, "there are sockets");
  EventSource source(pair[0], ::geteuid());
  const ssize_t sent = ::send(pair[1], message.data(), message.size(), MSG_NOSIGNAL);
  expect(sent == static_cast<ssize_t>(message.size()), "an event can be sent");
  const auto heard = source.wait(std::chrono::milliseconds(0));
  expect(heard == (concerns ? EventSource::Heard::kChange : EventSource::Heard::kNothing),
         "the listener hears what concerns storage and no more");
  ::close(pair[1]);
}

}  // namespace

void tavrenix::fuzz::run(std::string_view message) {
  const auto event = parseUevent(message);
  if (event) expectBounded(*event, message.size());
  expectAlike(message);
  expectHeard(message, event && concernsStorage(*event));
}
