// What a daemon sends back on its socket, any bytes: a reply is understood whole or the talk is
// over with an error, and nothing is waited for that is there already.
#include <cstring>
#include <optional>
#include <thread>

#include "fuzz/promise.hpp"
#include "linux/path_daemon.hpp"
#include "linux/text.hpp"
#include "runtime/signals.hpp"
#include "tests/linux/daemon_socket.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

constexpr std::size_t kLongestReply = 65536;
// Only a talk that has gone wrong is ended by it.
constexpr std::chrono::seconds kPatience(20);

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

void tavrenix::fuzz::run(std::string_view input) {
  const auto reply = wholeReply(input);
  if (reply) {
    const auto meaning = parseDaemonReply(*reply);
    expect(meaning == parseDaemonReply(std::string(trim(*reply)) + '\n'), "padding says nothing");
  }
  static const test::DaemonSocket socket;
  std::thread daemon([&] {
    const ob::AllSignalsBlocked blocked;  // libFuzzer's alarms go to the side that must bear them
    expect(!socket.serve(input, reply.has_value()).empty(), "a command comes first");
  });
  const auto answer =
      MultipathdSocket({socket.name()}, kPatience, ::geteuid()).ask("fail path sda");
  daemon.join();
  expect((answer.status == 0) == reply.has_value(), "a reply is taken whole or not at all");
  expect(!reply || answer.value == parseDaemonReply(*reply), "a reply means what it says");
}
