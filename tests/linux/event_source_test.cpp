// Listening to events, over a socket of the test's own.
#include "linux/event_source.hpp"

#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string_view>
#include <thread>

namespace tavrenix::sys {
namespace {

using namespace std::string_view_literals;
using Heard = EventSource::Heard;

constexpr auto kDisk = "add@/x\0SUBSYSTEM=block\0"sv;
constexpr std::chrono::milliseconds kSoon(1);
constexpr auto kNetwork = "add@/x\0SUBSYSTEM=net\0"sv;

class EventSourceTest : public testing::Test {
 protected:
  EventSourceTest() {
    int pair[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    source.emplace(pair[0], ::geteuid());
    sender = pair[1];
  }
  ~EventSourceTest() override { hangUp(); }
  void send(std::string_view message) const {
    EXPECT_EQ(::send(sender, message.data(), message.size(), 0),
              static_cast<ssize_t>(message.size()));
  }
  void hangUp() {
    if (sender >= 0) ::close(sender);
    sender = -1;
  }
  std::optional<EventSource> source;
  int sender = -1;
};

TEST_F(EventSourceTest, ManyEventsAreOneChange) {
  for (int i = 0; i < 3; ++i) send(kDisk);
  EXPECT_EQ(source->wait(), Heard::kChange);
  source->stop();
  EXPECT_EQ(source->wait(), Heard::kStop);
}

TEST_F(EventSourceTest, OtherAndBrokenEventsArePassedOver) {
  send(kNetwork);
  send("garbage");
  send("");
  EXPECT_EQ(source->wait(kSoon), Heard::kNothing);
}

TEST_F(EventSourceTest, AWaitUnderWayIsEndedByAChange) {
  std::thread later([this] {
    send(kNetwork);
    send(kDisk);
  });
  EXPECT_EQ(source->wait(), Heard::kChange);
  later.join();
}

TEST_F(EventSourceTest, AWaitUnderWayIsEndedByAStop) {
  std::thread stopper([this] { source->stop(); });
  EXPECT_EQ(source->wait(), Heard::kStop);
  EXPECT_EQ(source->wait(), Heard::kStop) << "and all later ones";
  stopper.join();
}

TEST_F(EventSourceTest, ASocketThatEndsIsTold) {
  hangUp();
  EXPECT_EQ(source->wait(), Heard::kBroken);
}

TEST_F(EventSourceTest, AMessageThatIsCutOffMayBeAboutAnything) {
  send(std::string("add@/x\0SUBSYSTEM=net\0"sv) + std::string(40000, 'x'));
  EXPECT_EQ(source->wait(), Heard::kChange);
}

TEST(EventSource, AnotherUserIsNotBelieved) {
  int pair[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
  EventSource source(pair[0], ::geteuid() + 1);
  EXPECT_GT(::send(pair[1], kDisk.data(), kDisk.size(), 0), 0);
  EXPECT_EQ(source.wait(kSoon), Heard::kNothing);
  ::close(pair[1]);
}

// A message as it comes from a netlink socket.
bool believed(unsigned group, unsigned senderPort, uid_t user, bool withCredentials = true) {
  sockaddr_nl from{};
  from.nl_family = AF_NETLINK;
  from.nl_groups = group;
  from.nl_pid = senderPort;
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))] = {};
  msghdr message{};
  message.msg_name = &from;
  message.msg_namelen = sizeof from;
  if (withCredentials) {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* head = CMSG_FIRSTHDR(&message);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_CREDENTIALS;
    head->cmsg_len = CMSG_LEN(sizeof(ucred));
    const ucred sender{1, user, user};
    std::memcpy(CMSG_DATA(head), &sender, sizeof sender);
  }
  return isBelieved(message, 0);
}

TEST(EventSource, OnlyTheKernelSpeaksInItsGroupAndOnlyRootInUdevs) {
  EXPECT_TRUE(believed(1, 0, 0));
  EXPECT_FALSE(believed(1, 4711, 0));
  EXPECT_TRUE(believed(2, 4711, 0));
  EXPECT_FALSE(believed(2, 4711, 1000));
  EXPECT_FALSE(believed(2, 4711, 0, false));
  EXPECT_FALSE(believed(0, 4711, 0)) << "sent to one socket alone";
}

// The kernel says once that it had no room, and what it had room for comes after that.
TEST(EventSource, LostEventsAreAChange) {
  const auto open = [](unsigned groups) {
    const int socket = ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_USERSOCK);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
  };
  EventSource source(open(2), ::geteuid());
  const int sender = open(0);
  sockaddr_nl group{};
  group.nl_family = AF_NETLINK;
  group.nl_groups = 2;
  for (int i = 0; i < 20000; ++i) {  // of the network, so that only the loss can be the change
    ::sendto(sender, kNetwork.data(), kNetwork.size(), 0, reinterpret_cast<const sockaddr*>(&group),
             sizeof group);
  }
  EXPECT_EQ(source.wait(), Heard::kChange);
  ::close(sender);
}

}  // namespace
}  // namespace tavrenix::sys
