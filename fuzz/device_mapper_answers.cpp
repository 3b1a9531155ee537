// What the kernel's device-mapper answers, any bytes behind a head of any kind: read within its
// bounds. And what it is sent, which comes back as it went.
#include <sys/ioctl.h>

#include <string_view>

#include "fuzz/promise.hpp"
#include "linux/dm_message.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

// What the driver answers to the next question; any other is answered with itself.
std::string_view gAnswer;

// A part that leads into another one is read as it stands, but that never goes on for long.
void expectBounded(std::size_t read, std::size_t room) {
  expect(read <= 2 * room, "the texts of an answer are bounded by its length");
}

void expectMaps(std::string_view answer) {
  gAnswer = answer;
  DmMessage question({}, DM_UUID_FLAG);
  constexpr std::size_t kRoom = 65536;
  if (question.ask(0, DM_LIST_DEVICES, kRoom) != 0) return;
  std::size_t read = 0;
  for (const auto& map : question.maps()) read += map.name.size() + map.uuid.size();
  expectBounded(read, kRoom);
}

void expectLines(std::string_view answer) {
  gAnswer = answer;
  DmMessage question(DeviceNumber{254, 0}, DM_NOFLUSH_FLAG);
  constexpr std::size_t kRoom = 4096;
  if (question.ask(0, DM_TABLE_STATUS, kRoom) != 0) return;
  const MapLines lines = question.lines();
  expect(lines.name.size() <= DM_NAME_LEN && lines.uuid.size() <= DM_UUID_LEN,
         "a map's name and uuid are bounded");
  std::size_t read = 0;
  for (const auto& target : lines.targets) {
    expect(target.type.size() <= DM_MAX_TYPE_NAME, "a target's type is bounded");
    read += target.line.size();
  }
  expectBounded(read, kRoom);
}

void expectSent(std::string_view text) {
  const std::string line(text.substr(0, text.find('\0')));
  DmMessage question(DeviceNumber{4095, 1048575}, DM_READONLY_FLAG);
  question.addTarget({1, UINT64_MAX, "multipath", line});
  gAnswer = {};
  expect(question.ask(0, DM_TABLE_LOAD) == 0, "a table can be sent");
  const MapLines lines = question.lines();
  expect(lines.readOnly && lines.targets.size() == 1, "one table is sent");
  const Target& target = lines.targets.front();
  expect(target.start == 1 && target.length == UINT64_MAX && target.type == "multipath" &&
             target.line == line,
         "a table is sent as it is");
}

}  // namespace

// In the place of ioctl: see CMakeLists.txt.
extern "C" int __wrap_ioctl(int, unsigned long, dm_ioctl* head) {
  gAnswer.copy(reinterpret_cast<char*>(head), head->data_size);
  gAnswer = {};
  return 0;
}

void tavrenix::fuzz::run(std::string_view input) {
  expectMaps(input);
  expectLines(input);
  expectSent(input);
}
