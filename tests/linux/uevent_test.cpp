// Events of the kernel and of udev, whole and broken.
#include "linux/uevent.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace tavrenix::sys {
namespace {

using namespace std::string_view_literals;

constexpr auto kFailed =
    "change@/devices/virtual/block/dm-0\0ACTION=change\0SUBSYSTEM=block\0DM_TARGET=multipath\0"
    "DM_ACTION=PATH_FAILED\0DM_PATH=8:16\0SEQNUM=990\0"sv;

std::string udevMessage(std::string_view properties, std::uint32_t offset = 40,
                        std::int64_t length = -1) {
  std::string message("libudev\0\xfe\xed\xca\xfe", 12);
  const auto append = [&](std::uint32_t number) {
    message.append(reinterpret_cast<const char*>(&number), sizeof number);
  };
  append(40);
  append(offset);
  append(static_cast<std::uint32_t>(length < 0 ? static_cast<std::int64_t>(properties.size())
                                               : length));
  message.resize(40);
  return message.append(properties);
}

TEST(Uevent, OfTheKernelIsRead) {
  const auto event = parseUevent(kFailed);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->value("DM_ACTION"), "PATH_FAILED");
  EXPECT_EQ(event->value("DM_PATH"), "8:16");
  EXPECT_EQ(event->value("NONE"), "");
  EXPECT_TRUE(concernsStorage(*event));
  EXPECT_FALSE(concernsStorage(*parseUevent("add@/x\0SUBSYSTEM=net\0"sv)));
}

TEST(Uevent, OfUdevIsRead) {
  const auto event = parseUevent(udevMessage("SUBSYSTEM=block\0ID_FS_LABEL=a=b\0"sv));
  ASSERT_TRUE(event);
  EXPECT_EQ(event->value("ID_FS_LABEL"), "a=b");
  EXPECT_TRUE(concernsStorage(*event));
}

TEST(Uevent, ThatIsBrokenIsNone) {
  for (const auto message :
       {""sv, "x"sv, "\0"sv, "no action\0A=b\0"sv, "@/x\0A=b\0"sv, "add@/x\0A=b"sv, "add@/x"sv}) {
    EXPECT_FALSE(parseUevent(message));
  }
  const std::string whole = udevMessage("SUBSYSTEM=block\0"sv);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(parseUevent(std::string_view(whole).substr(0, length))) << length;
  }
  EXPECT_FALSE(parseUevent(udevMessage("A=b\0"sv, 0xFFFFFFF0)));
  EXPECT_FALSE(parseUevent(udevMessage("A=b\0"sv, 4)));
  EXPECT_FALSE(parseUevent(udevMessage("A=b\0"sv, 40, 0xFFFFFFF0)));
  std::string endless = "add@/x";
  for (int i = 0; i < 5000; ++i) endless.append("\0A=b", 4);
  EXPECT_FALSE(parseUevent(endless + '\0'));
}

}  // namespace
}  // namespace tavrenix::sys
