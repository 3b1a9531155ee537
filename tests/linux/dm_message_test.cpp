// Questions to device-mapper and its answers, byte by byte as linux/dm-ioctl.h lays them out.
#include "linux/dm_message.hpp"

#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <cstring>
#include <functional>

namespace tavrenix::sys {
namespace {

// The driver: reads the question, and writes the answer in its place.
std::function<void(dm_ioctl& head, char* behind)> gDriver;

void put(char*& at, const void* bytes, std::size_t count) {
  std::memcpy(at, bytes, count);
  at += count;
}

void endAnswer(dm_ioctl& head, const char* end) {
  head.data_size = static_cast<std::uint32_t>(end - reinterpret_cast<const char*>(&head));
}

// An entry of the list as the kernel writes it; what stands behind the name depends on its version.
void putMap(char*& at, std::uint64_t device, const char* name, const char* uuid, int minorVersion,
            bool last) {
  char* const begin = at;
  const std::uint32_t numbers[] = {7, uuid != nullptr ? 1U : 2U};
  dm_name_list entry{};
  entry.dev = device;
  at += offsetof(dm_name_list, name);
  put(at, name, std::strlen(name) + 1);
  at += (8 - (at - begin) % 8) % 8;
  if (minorVersion >= 37) put(at, numbers, minorVersion >= 45 ? 8 : 4);
  if (minorVersion >= 45 && uuid != nullptr) put(at, uuid, std::strlen(uuid) + 1);
  at += (8 - (at - begin) % 8) % 8;
  entry.next = last ? 0 : static_cast<std::uint32_t>(at - begin);
  std::memcpy(begin, &entry, offsetof(dm_name_list, name));
}

void putTarget(char* at, const dm_target_spec& target, const char* line) {
  put(at, &target, sizeof target);
  put(at, line, std::strlen(line) + 1);
}

TEST(DmMessage, ListsMapsOfEveryVersion) {
  for (const int version : {36, 37, 45, 47}) {
    gDriver = [version](dm_ioctl& head, char* at) {
      EXPECT_EQ(head.flags & DM_UUID_FLAG, std::uint32_t{DM_UUID_FLAG});
      head.version[1] = static_cast<std::uint32_t>(version);
      // 254:300 and 254:1, as huge_encode_dev writes them.
      putMap(at, 0x10FE2C, "mpatha", "mpath-3600a", version, false);
      putMap(at, 0xFE01, "a-name-of-16-byt", nullptr, version, true);
      endAnswer(head, at);
    };
    DmMessage question({}, DM_UUID_FLAG);
    EXPECT_EQ(question.ask(0, DM_LIST_DEVICES), 0);
    const auto maps = question.maps();
    ASSERT_EQ(maps.size(), 2u) << version;
    EXPECT_EQ(maps[0].device, (DeviceNumber{254, 300}));
    EXPECT_EQ(maps[0].name, "mpatha");
    EXPECT_EQ(maps[0].uuid, version >= 45 ? "mpath-3600a" : "");
    EXPECT_EQ(maps[0].event, version >= 37 ? 7u : 0u);
    EXPECT_EQ(maps[1].device, (DeviceNumber{254, 1}));
    EXPECT_EQ(maps[1].name, "a-name-of-16-byt");
    EXPECT_EQ(maps[1].uuid, "");
  }
  gDriver = [](dm_ioctl& head, char* behind) {
    std::memset(behind, 0, 16);
    endAnswer(head, behind + 16);
  };
  DmMessage none;
  EXPECT_EQ(none.ask(0, DM_LIST_DEVICES), 0);
  EXPECT_TRUE(none.maps().empty());
}

TEST(DmMessage, ReadsTheLinesOfAMapOfThreeTargets) {
  gDriver = [](dm_ioctl& head, char* behind) {
    EXPECT_EQ(head.dev, 0x10FE2Cu);
    std::strcpy(head.name, "mpatha");
    std::strcpy(head.uuid, "mpath-3600a");
    head.flags = DM_SUSPEND_FLAG | DM_READONLY_FLAG | DM_INACTIVE_PRESENT_FLAG;
    head.open_count = 3;
    head.event_nr = 9;
    head.target_count = 3;
    putTarget(behind, {0, 10, 0, 56, "linear"}, "8:0 5");
    putTarget(behind + 56, {10, 10, 0, 112, "linear"}, "8:16 0");
    putTarget(behind + 112, {20, 10, 0, 168, "linear"}, "8:32 1");
    endAnswer(head, behind + 168);
  };
  DmMessage question(DeviceNumber{254, 300});
  ASSERT_EQ(question.ask(0, DM_TABLE_STATUS), 0);
  const auto lines = question.lines();
  EXPECT_EQ(lines.name, "mpatha");
  EXPECT_EQ(lines.uuid, "mpath-3600a");
  EXPECT_TRUE(lines.suspended && lines.readOnly && lines.inactiveTable);
  EXPECT_EQ(lines.openCount, 3);
  EXPECT_EQ(lines.event, 9u);
  ASSERT_EQ(lines.targets.size(), 3u);
  EXPECT_EQ(lines.targets[0].line, "8:0 5");
  EXPECT_EQ(lines.targets[1].start, 10u);
  EXPECT_EQ(lines.targets[1].type, "linear");
  EXPECT_EQ(lines.targets[1].line, "8:16 0");
  EXPECT_EQ(lines.targets[2].line, "8:32 1");
}

TEST(DmMessage, SendsTextsAndEventNumbers) {
  gDriver = [](const dm_ioctl& head, const char* behind) {
    EXPECT_EQ(head.event_nr, 0x1600000u);
    dm_target_msg message{};
    std::memcpy(&message, behind, offsetof(dm_target_msg, message));
    EXPECT_EQ(message.sector, 0u);
    EXPECT_STREQ(behind + offsetof(dm_target_msg, message), "fail_path 8:16");
  };
  DmMessage question(DeviceNumber{254, 0});
  question.setEvent(0x1600000);
  question.addText("fail_path 8:16");
  EXPECT_EQ(question.ask(0, DM_TARGET_MSG), 0);
}

TEST(DmMessage, AsksAgainWithMoreRoomUntilTheAnswerFits) {
  std::vector<std::uint32_t> rooms;
  gDriver = [&](dm_ioctl& head, const char*) {
    rooms.push_back(head.data_size);
    if (head.data_size < 65536) head.flags |= DM_BUFFER_FULL_FLAG;
  };
  EXPECT_EQ(DmMessage().ask(0, DM_LIST_DEVICES), 0);
  EXPECT_EQ(rooms, (std::vector<std::uint32_t>{4096, 16384, 65536}));
  gDriver = [](dm_ioctl& head, const char*) { head.flags |= DM_BUFFER_FULL_FLAG; };
  EXPECT_EQ(DmMessage().ask(0, DM_LIST_DEVICES), -EOVERFLOW);
}

}  // namespace
}  // namespace tavrenix::sys

// In the place of ioctl: see CMakeLists.txt.
extern "C" int __wrap_ioctl(int, unsigned long, dm_ioctl* head) {
  tavrenix::sys::gDriver(*head, reinterpret_cast<char*>(head) + head->data_start);
  return 0;
}
