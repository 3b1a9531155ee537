// The talk with multipathd over its socket, with a daemon of the test's own.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "linux/path_daemon.hpp"

namespace tavrenix::sys {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

// Accepts one talk on an abstract address, and sends reply, as it is, once a command has come.
class Daemon {
 public:
  explicit Daemon(std::string reply, bool answers = true)
      : name_("@tavrenix-test-" + std::to_string(::getpid()) + '-' + std::to_string(++count_)),
        listener_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name_.data() + 1, name_.size() - 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size());
    EXPECT_EQ(::bind(listener_, reinterpret_cast<const sockaddr*>(&address), length), 0);
    EXPECT_EQ(::listen(listener_, 1), 0);
    thread_ = std::thread([this, text = std::move(reply), answers] {
      const int talk = ::accept(listener_, nullptr, nullptr);
      char buffer[1024];
      const ssize_t got = ::recv(talk, buffer, sizeof buffer, 0);
      if (got > 0) received_.assign(buffer, static_cast<std::size_t>(got));
      if (answers) ::send(talk, text.data(), text.size(), MSG_NOSIGNAL);
      if (!answers) ::recv(talk, buffer, sizeof buffer, 0);  // until the other side gives up
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
  Daemon daemon("", false);
  MultipathdSocket socket({daemon.name()}, 50ms, ::geteuid());
  EXPECT_EQ(socket.ask("fail path sda").status, -ETIMEDOUT);
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
