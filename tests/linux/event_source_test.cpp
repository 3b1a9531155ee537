// Listening to events, over a socket of the test's own.
#include "linux/event_source.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string_view>
#include <thread>

namespace tavrenix::sys {
namespace {

using namespace std::string_view_literals;
using Heard = EventSource::Heard;

constexpr auto kDisk = "add@/x\0SUBSYSTEM=block\0"sv;
constexpr auto kNetwork = "add@/x\0SUBSYSTEM=net\0"sv;

class EventSourceTest : public testing::Test {
 protected:
  EventSourceTest() {
    int pair[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    source.emplace(pair[0]);
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
  std::thread stopper([this] { source->stop(); });
  EXPECT_EQ(source->wait(), Heard::kStop);
  stopper.join();
}

TEST_F(EventSourceTest, AWaitUnderWayIsEndedByAChange) {
  std::thread later([this] {
    send(kNetwork);
    send(kDisk);
  });
  EXPECT_EQ(source->wait(), Heard::kChange);
  later.join();
}

TEST_F(EventSourceTest, ASocketThatEndsIsTold) {
  hangUp();
  EXPECT_EQ(source->wait(), Heard::kBroken);
}

}  // namespace
}  // namespace tavrenix::sys
