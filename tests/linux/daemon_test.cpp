// The exchange with multipathd over its socket, with a daemon of the test's own.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <csignal>
#include <thread>

#include "linux/kernel/path_daemon.hpp"

namespace tavrenix::sys {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

std::string framed(std::string_view text, std::size_t length) {
  return std::string(reinterpret_cast<const char*>(&length), sizeof length).append(text);
}

TEST(MultipathdSocket, TakesWholeRepliesOfItsUserInTimeAndTrustsNoOther) {
  struct Row {
    std::string reply;
    int status;
    DaemonReply meaning = {};
    bool waits = false;  // does not hang up
    uid_t user = ::geteuid();
  };
  const Row rows[] = {
      {framed("fail\nmap or partition in use\n\0"sv, 30), 0, DaemonReply::kRefused},
      {framed("ok\n\0"sv, 4), 0, DaemonReply::kDone},
      {framed("ok", 100), -ECONNRESET},
      {framed("", std::size_t(-1)), -EMSGSIZE},
      {"", -ETIMEDOUT, {}, true},
      {"", -ENOENT, {}, true, ::geteuid() + 1},  // that user may not even see the command
  };
  std::signal(SIGUSR1, [](int) {});  // does not end the exchange
  const std::string name = "@tavrenix-" + std::to_string(::getpid());
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path + 1, name.size(), 1);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
  for (const auto& row : rows) {
    const ob::FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), length), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    std::string received(1024, '\0');
    std::thread daemon([&, asking = ::pthread_self()] {
      const ob::FileDescriptor client(::accept(listener.get(), nullptr, nullptr));
      const ssize_t got = ::recv(client.get(), received.data(), received.size(), 0);
      received.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
      for (const char byte : row.reply) {
        ::send(client.get(), &byte, 1, MSG_NOSIGNAL);
        ::pthread_kill(asking, SIGUSR1);
      }
      char end = 0;
      if (row.waits) ::recv(client.get(), &end, 1, 0);
    });
    // No process listens on the first address.
    MultipathdSocket socket({"@tavrenix-nobody", name}, row.waits ? 50ms : 5s, row.user);
    const auto answer = socket.ask("fail path sda");
    daemon.join();
    EXPECT_EQ(answer.status, row.status) << row.reply.size();
    EXPECT_EQ(answer.value, row.meaning) << row.reply.size();
    EXPECT_EQ(received, row.status == -ENOENT ? "" : framed("fail path sda\0"sv, 14));
  }
}

}  // namespace
}  // namespace tavrenix::sys
