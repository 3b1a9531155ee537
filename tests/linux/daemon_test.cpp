// The talk with multipathd over its socket, with a daemon of the test's own.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <thread>

#include "linux/path_daemon.hpp"
#include "tests/linux/daemon_socket.hpp"

namespace tavrenix::sys {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

std::string framed(std::string_view text, std::size_t length) {
  std::string frame(reinterpret_cast<const char*>(&length), sizeof length);
  return frame.append(text);
}
std::string framed(std::string_view text) {
  return framed(text, text.size());
}

struct Daemon {
  std::string reply;
  bool waits = false;  // for the other side to hang up
  std::function<void()> afterEachByte = [] {};
};

// What the client makes of a daemon, and what that daemon received.
struct Talk {
  Answer<DaemonReply> answer;
  std::string received;
};
Talk talk(const Daemon& daemon, std::chrono::milliseconds patience = 5s, uid_t user = ::geteuid()) {
  const test::DaemonSocket socket;
  Talk talk;
  std::thread serving(
      [&] { talk.received = socket.serve(daemon.reply, daemon.waits, daemon.afterEachByte); });
  // The first address is where nobody listens.
  talk.answer =
      MultipathdSocket({"@tavrenix-nobody", socket.name()}, patience, user).ask("fail path sda");
  serving.join();
  return talk;
}

TEST(MultipathdSocket, UnderstandsRepliesOfEveryVersion) {
  const std::pair<std::string_view, DaemonReply> rows[] = {
      {"ok\n\0"sv, DaemonReply::kDone},
      {"ok", DaemonReply::kDone},
      {"fail\n\0"sv, DaemonReply::kRefused},
      {"fail\nmap or partition in use\n\0"sv, DaemonReply::kRefused},
      {"timeout\n\0"sv, DaemonReply::kTooLate},
      {"", DaemonReply::kUnknown},
      {"okay\n", DaemonReply::kUnknown},
      {"failed to send", DaemonReply::kUnknown},
  };
  for (const auto& [reply, meaning] : rows) {
    const auto [answer, received] = talk({framed(reply), true});
    EXPECT_EQ(answer.status, 0) << reply;
    EXPECT_EQ(answer.value, meaning) << reply;
    EXPECT_EQ(received, framed("fail path sda\0"sv));
  }
}

TEST(MultipathdSocket, TrustsNoReply) {
  for (const auto& reply :
       {std::string(), std::string("abc"), framed("ok", 100), framed("", std::size_t(-1))}) {
    EXPECT_LT(talk({reply}).answer.status, 0) << reply.size();
  }
  EXPECT_EQ(talk({"", true}, 50ms).answer.status, -ETIMEDOUT);
}

TEST(MultipathdSocket, TellsThatNoDaemonRuns) {
  MultipathdSocket nobody({"@tavrenix-nobody", "/nonexistent/multipathd.socket"}, 5s);
  EXPECT_EQ(nobody.ask("fail path sda").status, -ENOENT);
  EXPECT_EQ(nobody.ask(std::string(511, 'x')).status, -ENOENT);
  EXPECT_EQ(nobody.ask(std::string(512, 'x')).status, -EMSGSIZE) << "more than a daemon takes";
  const auto [answer, received] = talk({framed("ok\n\0"sv)}, 5s, ::geteuid() + 1);
  EXPECT_EQ(answer.status, -ENOENT) << "another user may listen there";
  EXPECT_EQ(received, "") << "not even the command is for it";
}

TEST(MultipathdSocket, IsNotDisturbedBySignals) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  const auto disturb = [asking = ::pthread_self()] {
    for (int i = 0; i < 20; ++i) ::pthread_kill(asking, SIGUSR1);
  };
  const auto [answer, received] = talk({framed("ok\n\0"sv), false, disturb});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.value, DaemonReply::kDone);
  ::sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
}  // namespace tavrenix::sys
