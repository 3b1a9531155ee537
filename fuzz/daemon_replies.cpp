// What a daemon sends back on its socket, any bytes: a reply is understood whole or the talk is
// over with an error, and nothing is waited for that is there already.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <optional>
#include <thread>

#include "fuzz/promise.hpp"
#include "linux/path_daemon.hpp"
#include "linux/text.hpp"
#include "runtime/signals.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

constexpr std::size_t kLongestReply = 65536;
// Only a talk that has gone wrong is ended by it.
constexpr std::chrono::seconds kPatience(20);

// Listens on an abstract address as long as the process lives.
class Listener {
 public:
  Listener() : name_("@tavrenix-fuzz-" + std::to_string(::getpid())) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name_.data() + 1, name_.size() - 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size());
    expect(::bind(file_, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
               ::listen(file_, 1) == 0,
           "there is an address to listen on");
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { ::close(file_); }

  const std::string& name() const { return name_; }
  // Takes one command and sends the bytes. stays: hangs up only after the other side has.
  void serve(std::string_view bytes, bool stays) const {
    const ob::AllSignalsBlocked blocked;  // libFuzzer's alarms go to the side that must bear them
    const int talk = ::accept(file_, nullptr, nullptr);
    char command[600];
    expect(::recv(talk, command, sizeof command, 0) > 0, "a command comes first");
    ::send(talk, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (stays) ::recv(talk, command, sizeof command, 0);
    ::close(talk);
  }

 private:
  std::string name_;
  int file_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

// The text of a reply that is there whole.
std::optional<std::string_view> wholeReply(std::string_view bytes) {
  std::size_t length = 0;
  if (bytes.size() < sizeof length) return std::nullopt;
  std::memcpy(&length, bytes.data(), sizeof length);
  bytes.remove_prefix(sizeof length);
  if (length > kLongestReply || length > bytes.size()) return std::nullopt;
  return bytes.substr(0, length);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = tavrenix::fuzz::textOf(data, size);
  const auto reply = wholeReply(bytes);
  if (reply) {
    const auto meaning = parseDaemonReply(*reply);
    expect(meaning == parseDaemonReply(std::string(trim(*reply)) + '\n'), "padding says nothing");
  }
  static const Listener listener;
  std::thread daemon([&] { listener.serve(bytes, reply.has_value()); });
  const auto answer =
      MultipathdSocket({listener.name()}, kPatience, ::geteuid()).ask("fail path sda");
  daemon.join();
  expect((answer.status == 0) == reply.has_value(), "a reply is taken whole or not at all");
  expect(!reply || answer.value == parseDaemonReply(*reply), "a reply means what it says");
  return 0;
}
