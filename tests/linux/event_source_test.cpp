// Listening to events, over sockets of the test's own, and what events say, whole and broken.
#include "linux/event_source.hpp"

#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "linux/uevent.hpp"
#include "tests/linux/udev_message.hpp"

namespace tavrenix::sys {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test::udevMessage;
using Heard = EventSource::Heard;

const std::string kDisk = "add@/x\0SUBSYSTEM=block\0"s;
const std::string kNetwork = "add@/x\0SUBSYSTEM=net\0"s;
constexpr std::chrono::milliseconds kSoon(1);

TEST(Uevent, OfTheKernelAndOfUdevIsRead) {
  const auto failed = parseUevent(
      "change@/devices/virtual/block/dm-0\0ACTION=change\0SUBSYSTEM=block\0DM_TARGET=multipath\0"
      "DM_ACTION=PATH_FAILED\0DM_PATH=8:16\0SEQNUM=990\0"sv);
  ASSERT_TRUE(failed);
  EXPECT_EQ(failed->value("DM_ACTION"), "PATH_FAILED");
  EXPECT_EQ(failed->value("NONE"), "");
  EXPECT_TRUE(concernsStorage(*failed));
  EXPECT_FALSE(concernsStorage(*parseUevent(kNetwork)));
  const auto labelled = parseUevent(udevMessage("SUBSYSTEM=block\0ID_FS_LABEL=a=b\0"sv));
  ASSERT_TRUE(labelled);
  EXPECT_EQ(labelled->value("ID_FS_LABEL"), "a=b");
  EXPECT_TRUE(concernsStorage(*labelled));
}

TEST(Uevent, ThatIsBrokenIsNone) {
  std::vector<std::string> broken{"",
                                  "x",
                                  "\0"s,
                                  "no action\0A=b\0"s,
                                  "@/x\0A=b\0"s,
                                  "add@/x\0A=b"s,
                                  "add@/x",
                                  udevMessage("A=b\0"sv, 4, 0xFFFFFFF0),
                                  udevMessage("A=b\0"sv, 4, 4),
                                  udevMessage("A=b\0"sv, 0xFFFFFFF0)};
  for (auto whole = udevMessage("SUBSYSTEM=block\0"sv); !whole.empty();) {
    whole.pop_back();
    broken.push_back(whole);
  }
  std::string& endless = broken.emplace_back("add@/x\0"s);
  for (int i = 0; i < 5000; ++i) endless += "A=b\0"sv;
  for (const auto& message : broken) EXPECT_FALSE(parseUevent(message)) << message.substr(0, 100);
}

class EventSourceTest : public testing::Test {
 protected:
  EventSourceTest() { open(::geteuid()); }
  ~EventSourceTest() override { hangUp(); }
  // believed: the user whose events are heard.
  void open(uid_t believed) {
    hangUp();
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    source.emplace(pair[0], believed);
    sender = pair[1];
  }
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

TEST_F(EventSourceTest, HearsWhatMayConcernStorageAndNoMore) {
  struct Row {
    std::vector<std::string> messages;
    Heard heard;
  };
  const Row rows[] = {
      {{kDisk, kDisk, kDisk}, Heard::kChange},  // many events are one change
      {{kNetwork, "garbage", ""}, Heard::kNothing},
      {{kNetwork + std::string(40000, 'x')}, Heard::kChange},  // cut off: about anything
  };
  for (const auto& row : rows) {
    for (const auto& message : row.messages) send(message);
    EXPECT_EQ(source->wait(kSoon), row.heard) << row.messages.front();
    EXPECT_EQ(source->wait(kSoon), Heard::kNothing);
  }
  hangUp();
  EXPECT_EQ(source->wait(), Heard::kBroken);
  open(::geteuid() + 1);
  send(kDisk);
  EXPECT_EQ(source->wait(kSoon), Heard::kNothing) << "another user is not believed";
}

TEST_F(EventSourceTest, AWaitUnderWayIsEndedByAChangeAndByAStop) {
  std::thread changing([&] {
    send(kNetwork);
    send(kDisk);
  });
  EXPECT_EQ(source->wait(), Heard::kChange);
  changing.join();
  std::thread stopping([&] { source->stop(); });
  EXPECT_EQ(source->wait(), Heard::kStop);
  EXPECT_EQ(source->wait(), Heard::kStop) << "and all later ones";
  stopping.join();
}

sockaddr_nl netlinkAddress(unsigned groups, unsigned port = 0) {
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = groups;
  address.nl_pid = port;
  return address;
}

// A message as it comes from a netlink socket, from that user or without a word of who it is.
bool believed(unsigned group, unsigned senderPort, std::optional<uid_t> user) {
  sockaddr_nl from = netlinkAddress(group, senderPort);
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))] = {};
  msghdr message{};
  message.msg_name = &from;
  message.msg_namelen = sizeof from;
  if (user) {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* head = CMSG_FIRSTHDR(&message);
    *head = {CMSG_LEN(sizeof(ucred)), SOL_SOCKET, SCM_CREDENTIALS};
    const ucred sender{1, *user, *user};
    std::memcpy(CMSG_DATA(head), &sender, sizeof sender);
  }
  return isBelieved(message, 0);
}

TEST(EventSource, OnlyTheKernelSpeaksInItsGroupAndOnlyRootInUdevs) {
  EXPECT_TRUE(believed(1, 0, 0));
  EXPECT_FALSE(believed(1, 4711, 0));
  EXPECT_TRUE(believed(2, 4711, 0));
  EXPECT_FALSE(believed(2, 4711, 1000));
  EXPECT_FALSE(believed(2, 4711, std::nullopt));
  EXPECT_FALSE(believed(0, 4711, 0)) << "sent to one socket alone";
}

// The kernel says once that it had no room, and what it had room for comes after that.
TEST(EventSource, LostEventsAreAChange) {
  const auto open = [](unsigned groups) {
    const int socket = ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_USERSOCK);
    const auto address = netlinkAddress(groups);
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
  };
  EventSource source(open(2), ::geteuid());
  const int sender = open(0);
  const auto group = netlinkAddress(2);
  for (int i = 0; i < 20000; ++i) {  // of the network, so that only the loss can be the change
    ::sendto(sender, kNetwork.data(), kNetwork.size(), 0, reinterpret_cast<const sockaddr*>(&group),
             sizeof group);
  }
  EXPECT_EQ(source.wait(), Heard::kChange);
  ::close(sender);
}

}  // namespace
}  // namespace tavrenix::sys
