// The talk with multipathd over its socket, with a daemon of the test's own.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <thread>

#include "linux/path_daemon.hpp"

namespace tavrenix::sys {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

// What the daemon does once it has sent its reply.
enum class Then { kHangsUp, kWaits };  // for the other side to hang up

// Accepts one talk on an abstract address, and sends reply, as it is, once a command has come.
class Daemon {
 public:
  // afterEachByte: called between the bytes of the reply.
  explicit Daemon(
      std::string reply, Then then = Then::kHangsUp, std::function<void()> afterEachByte = [] {})
      : name_("@tavrenix-test-" + std::to_string(::getpid()) + '-' + std::to_string(++count_)),
        listener_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name_.data() + 1, name_.size() - 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size());
    EXPECT_EQ(::bind(listener_, reinterpret_cast<const sockaddr*>(&address), length), 0);
    EXPECT_EQ(::listen(listener_, 1), 0);
    thread_ = std::thread([this, text = std::move(reply), then, afterEachByte] {
      const int talk = ::accept(listener_, nullptr, nullptr);
      char buffer[1024];
      const ssize_t got = ::recv(talk, buffer, sizeof buffer, 0);
      if (got > 0) received_.assign(buffer, static_cast<std::size_t>(got));
      for (const char& byte : text) {
        ::send(talk, &byte, 1, MSG_NOSIGNAL);
        afterEachByte();
      }
      if (then == Then::kWaits) ::recv(talk, buffer, sizeof buffer, 0);
      ::close(talk);
    });
  }
  ~Daemon() {
    if (thread_.joinable()) thread_.join();
    ::close(listener_);
  }
  const std::string& name() const { return name_; }
  const std::string& received() {
    thread_.join();
    return received_;
  }

 private:
  static inline int count_ = 0;
  std::string name_;
  int listener_;
  std::string received_;
  std::thread thread_;
};

std::string framed(std::string_view text, std::size_t length) {
  std::string frame(reinterpret_cast<const char*>(&length), sizeof length);
  return frame.append(text);
}
std::string framed(std::string_view text) {
  return framed(text, text.size());
}

TEST(MultipathdSocket, CarriesACommandAndItsReply) {
  Daemon daemon(framed("ok\n\0"sv));
  // The first address is where nobody listens.
  MultipathdSocket socket({"@tavrenix-nobody", daemon.name()}, 5s, ::geteuid());
  const auto answer = socket.ask("fail path sda");
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.value, DaemonReply::kDone);
  EXPECT_EQ(daemon.received(), frameDaemonCommand("fail path sda").value());
}

TEST(MultipathdSocket, TellsThatNoDaemonRuns) {
  MultipathdSocket socket({"@tavrenix-nobody", "/nonexistent/multipathd.socket"}, 5s);
  EXPECT_EQ(socket.ask("fail path sda").status, -ENOENT);
}

TEST(MultipathdSocket, GivesUpOnADaemonThatIsSilent) {
  Daemon daemon("", Then::kWaits);
  MultipathdSocket socket({daemon.name()}, 50ms, ::geteuid());
  EXPECT_EQ(socket.ask("fail path sda").status, -ETIMEDOUT);
}

TEST(MultipathdSocket, DoesNotWaitForAnEmptyReply) {
  Daemon daemon(framed(""), Then::kWaits);
  MultipathdSocket socket({daemon.name()}, 5s, ::geteuid());
  const auto answer = socket.ask("fail path sda");
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.value, DaemonReply::kUnknown);
}

TEST(MultipathdSocket, IsNotDisturbedBySignals) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  const pthread_t asking = ::pthread_self();
  Daemon daemon(framed("ok\n\0"sv), Then::kHangsUp, [&] {
    for (int i = 0; i < 20; ++i) ::pthread_kill(asking, SIGUSR1);
  });
  const auto answer = MultipathdSocket({daemon.name()}, 5s, ::geteuid()).ask("fail path sda");
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.value, DaemonReply::kDone);
  daemon.received();  // its thread sends no more signals then
  ::sigaction(SIGUSR1, &before, nullptr);
}

TEST(MultipathdSocket, PassesOverWhatAnotherUserListensOn) {
  Daemon usurper(framed("ok\n\0"sv));
  MultipathdSocket socket({usurper.name()}, 5s, ::geteuid() + 1);
  EXPECT_EQ(socket.ask("fail path sda").status, -ENOENT);
  EXPECT_EQ(usurper.received(), "") << "not even the command is for it";
}

TEST(MultipathdSocket, TrustsNoReply) {
  const std::string replies[] = {"", "abc", framed("ok", 100), framed("", std::size_t(-1))};
  for (const auto& reply : replies) {
    Daemon daemon(reply);
    MultipathdSocket socket({daemon.name()}, 5s, ::geteuid());
    EXPECT_LT(socket.ask("fail path sda").status, 0) << reply.size();
  }
  EXPECT_LT(MultipathdSocket({}, 5s).ask(std::string(600, 'x')).status, 0);
}

}  // namespace
}  // namespace tavrenix::sys
