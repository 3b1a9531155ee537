// Parsers of what devices, the kernel and daemons say: good lines, and all that may come instead.
#include <gmock/gmock.h>

#include "linux/block_stat.hpp"
#include "linux/device_number.hpp"
#include "linux/disk_counters.hpp"
#include "linux/inquiry.hpp"
#include "linux/path_state.hpp"
#include "linux/place.hpp"
#include "linux/properties.hpp"
#include "linux/udev_record.hpp"
#include "linux/vpd83.hpp"
#include "linux/wwid.hpp"
#include "runtime/string.hpp"

namespace tavrenix::sys {
namespace {

using Bytes = std::vector<std::uint8_t>;
using namespace std::string_view_literals;

TEST(Text, BecomesWhatNoTerminalActsOn) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"disk 1", "disk 1"},
      {"\x1b[2J\r\n\0x"sv, "?[2J???x"},
      {"\x7f\xc2\x9b", "??"},      // delete, and the eight-bit form of escape [
      {"b\xc3\xbc", "b\xc3\xbc"},  // text in UTF-8 stays
      {"\xff\xc3", "??"},          // not UTF-8, and cut off
      {"\xed\xa0\x80", "???"},     // half of a pair
      {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
  };
  for (const auto& [bytes, shown] : rows) EXPECT_EQ(printable(bytes), shown);
  EXPECT_EQ(printable(std::string(1000, 'x')).size(), 255u);
  EXPECT_EQ(printable("ab\xc3\xbc", 3), "ab");  // never half a character
}

TEST(Text, NumbersAndNamesAreWholeOrNothing) {
  EXPECT_EQ(parseNumber("18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(parseNumber("ff", 16), 255u);
  for (const auto text : {"", "-1", "+1", " 1", "1 ", "1x", "18446744073709551616"}) {
    EXPECT_FALSE(parseNumber(text)) << text;
  }
  EXPECT_EQ(parseDeviceNumber("254:1048575"), (DeviceNumber{254, 1048575}));
  for (const auto text : {"", ":", "8", "8:", ":1", "8:1:2", "4096:0", "8:1048576", "../x"}) {
    EXPECT_FALSE(parseDeviceNumber(text)) << text;
  }
  for (const auto text : {"sdaa", "cciss!c0d0"}) EXPECT_TRUE(isDeviceName(text)) << text;
  for (const auto text : {"", ".", "..", "a/b", "a b", "a\n"}) EXPECT_FALSE(isDeviceName(text));
}

TEST(Wwid, NamesTheDesignator) {
  const std::pair<std::string_view, Bytes> rows[] = {
      {"mpath-3600a0b80", {0x60, 0x0A, 0x0B, 0x80}},
      {"mpath-20011aaBB", {0x00, 0x11, 0xAA, 0xBB}},
      {"mpath-8iqn.x", {'i', 'q', 'n', '.', 'x'}},
      {"mpath-1ATA_X", {'A', 'T', 'A', '_', 'X'}},
      {"mpath-data", {'d', 'a', 't', 'a'}},
      {"mpath-3xyz", {'3', 'x', 'y', 'z'}},  // no designator after all: the whole text
      {"mpath-360a", {'3', '6', '0', 'a'}},  // half a byte
      {"mpath-3", {'3'}},
  };
  for (const auto& [uuid, bytes] : rows) EXPECT_EQ(designatorOf(uuid), bytes) << uuid;
  for (const auto uuid : {"", "mpath-", "LVM-x", "part1-mpath-3600a0b80", "Mpath-36"}) {
    EXPECT_FALSE(designatorOf(uuid)) << uuid;
  }
  EXPECT_EQ(designatorOf("mpath-3" + std::string(400, 'a'))->size(), 64u);
}

TEST(Place, IsReadFromTheLink) {
  const auto fc = parsePlace(
      "../../devices/pci0000:00/0000:00:05.0/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sdc");
  ASSERT_TRUE(fc);
  EXPECT_EQ(fc->name, "sdc");
  EXPECT_EQ(fc->address, (ScsiAddress{3, 0, 1, 5}));
  EXPECT_EQ(fc->transport, Transport::kFibreChannel);
  EXPECT_EQ(fc->device,
            "/sys/devices/pci0000:00/0000:00:05.0/host3/rport-3:0-1/target3:0:1/3:0:1:5");
  // Some disks stand right below what they are disks of.
  EXPECT_EQ(parsePlace("../../devices/pci/nvme/nvme0/nvme0n1")->device,
            "/sys/devices/pci/nvme/nvme0");
  const std::pair<const char*, Transport> rows[] = {
      {"../../host1/port-1:0/end_device-1:0/target1:0:0/1:0:0:0/block/sda", Transport::kSas},
      {"../../host2/session1/target2:0:0/2:0:0:0/block/sdb", Transport::kIscsi},
      {"../../adapter0/host0/target0:0:0/0:0:0:0/block/sda", Transport::kUnknown},
  };
  for (const auto& [link, transport] : rows) EXPECT_EQ(parsePlace(link)->transport, transport);
  EXPECT_FALSE(parsePlace("../../devices/virtual/block/dm-0")->address);
  for (const auto link :
       {"", "/", "../../a/..", "../../a/../b", "../../a/b c", "../../x\ny", "/a/b"})
    EXPECT_FALSE(parsePlace(link));
}

TEST(PathIdentifier, CanBeReadAndFitsTheTable) {
  const ScsiAddress longest{UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT64_MAX};
  const std::pair<std::optional<ScsiAddress>, const char*> rows[] = {
      {{{3, 0, 1, 5}}, "003F00F0001F0005"},
      {{{1234, 12, 12345, 16385}}, "01234F12F12345F16385"},
      {{{0, 0, 10000, 1}}, "0000F00F10000F0001"},
      {{{12, 0, 7, 4611967493404098560U}}, "12F0F7F4611967493404098560"},
      {std::nullopt, "E0008F0032"},
      {longest, "E0008F0032"},
  };
  for (const auto& [address, digits] : rows) {
    EXPECT_EQ(textOfIdentifier(pathIdentifier(address, 8, 32)), digits);
  }
}

TEST(DiskCounters, TellsEachDevicesLineOnce) {
  DiskCounters counters(
      "   8       0 sda 1 2 3\n254    1048575 dm-0 4 5 6\nnonsense\n\n"
      "4096 0 sdx 1 1 1\n   8      16 sdb 7");
  EXPECT_EQ(counters.take({8, 0}), " 1 2 3");
  EXPECT_TRUE(counters.taken({8, 0}));
  EXPECT_EQ(counters.take({8, 0}), std::nullopt);
  EXPECT_EQ(counters.take({254, 1048575}), " 4 5 6");
  EXPECT_EQ(counters.take({8, 32}), std::nullopt);
  EXPECT_FALSE(counters.taken({8, 32}));
  EXPECT_EQ(counters.take({8, 16}), " 7");
}

TEST(BlockStat, CountsBytesAndCommandsOfEveryKernel) {
  // Columns: reads, merged, sectors, ms; the same for writes; three more; discards; flushes.
  const std::string v44 = "  7 1 80 9  5 1 16 3  0 1 2";
  const std::string v418 = v44 + " 11 0 8 1";
  const std::string v55 = v418 + " 13 4";
  for (const auto& [text, commands] :
       {std::pair(v44, 12U), std::pair(v418, 23U), std::pair(v55 + "\n", 36U),
        std::pair(v55 + " 99 99 99", 36U)}) {
    const auto record = parseBlockStat(text);
    ASSERT_TRUE(record) << text;
    EXPECT_EQ(record->bytesReceived, 80u * 512);
    EXPECT_EQ(record->bytesSent, 16u * 512);
    EXPECT_EQ(record->commandsProcessed, commands);
  }
  EXPECT_EQ(parseBlockStat("0 0 8388609 0 0 0 8388608 0 0 0 0")->bytesReceived, 4294967808u);
  for (const auto text :
       {"", "1 2 3", "1 2 3 4 5 6 7 8 9 10", "1 2 3 4 5 6 7 8 9 10 x", "1 2 3 4 5 6 7 8 9 10 -1"}) {
    EXPECT_FALSE(parseBlockStat(text)) << text;
  }
  EXPECT_FALSE(parseBlockStat(std::string(100000, '1')));
}

TEST(UdevRecord, GivesTheLabel) {
  const std::pair<std::string_view, std::optional<std::string>> rows[] = {
      {"S:x\nE:ID_FS_LABEL=a_b\nE:ID_FS_LABEL_ENC=a\\x20b\n", "a b"},
      {"E:ID_FS_LABEL=plain\n", "plain"},
      {"E:ID_FS_LABEL_ENC=only\n", "only"},
      {"E:ID_FS_LABEL=one\nE:ID_FS_LABEL=two", "two"},
      {"E:ID_FS_LABEL_ENC=\\x1b[2J\n", "?[2J"},
      {"E:ID_FS_LABEL_ENC=\\xzz\\x4", "\\xzz\\x4"},
      {"E:ID_FS_LABEL_ENC=gr\\xc3\\xbcn\n", "gr\xc3\xbcn"},
      {"E:ID_FS_LABEL=\nE:ID_FS_LABEL_ENC=\\x20\\x20", std::nullopt},
      {"E:ID_FS_LABELS=x\nID_FS_LABEL=y\nN:ID_FS_LABEL=z", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [record, label] : rows) EXPECT_EQ(fileSystemLabel(record), label) << record;
  EXPECT_LE(fileSystemLabel("E:ID_FS_LABEL=" + std::string(9999, 'l'))->size(), 255u);
}

// A page of the descriptors given: each is code set, type and association, and bytes.
Bytes page(const std::vector<std::pair<std::uint8_t, Bytes>>& descriptors) {
  Bytes all{0, 0x83, 0, 0};
  for (const auto& [type, bytes] : descriptors) {
    all.insert(all.end(), {1, type, 0, static_cast<std::uint8_t>(bytes.size())});
    all.insert(all.end(), bytes.begin(), bytes.end());
  }
  all[2] = static_cast<std::uint8_t>((all.size() - 4) >> 8);
  all[3] = static_cast<std::uint8_t>(all.size() - 4);
  return all;
}

TEST(Vpd83, PrefersTheBestDesignatorOfTheUnit) {
  const Bytes naa5{0x50, 1}, naa6{0x60, 2}, text{'A', ' ', ' ', 'B', ' '};
  const auto wwid = [](const Bytes& bytes) {
    const auto found = preferredDesignator(bytes);
    return found ? wwidOf(*found) : "(none)";
  };
  EXPECT_EQ(wwid(page({{3, naa5}, {2, {1}}, {3, naa6}, {1, text}})), "36002");
  EXPECT_EQ(wwid(page({{1, text}, {2, {0xAB}}})), "2ab");
  EXPECT_EQ(wwid(page({{1, text}})), "1A_B");
  EXPECT_EQ(wwid(page({{8, {'i', 'q', 'n', 0}}, {1, text}})), "8iqn");
  EXPECT_EQ(wwid(page({{0x13, naa6}, {0x23, naa6}})), "(none)");  // of the port, of the target
  EXPECT_EQ(wwid(page({{3, {}}, {7, {1}}, {15, {1}}})), "(none)");
}

TEST(Vpd83, TrustsNoLength) {
  const Bytes whole = page({{3, Bytes(16, 0x60)}, {2, Bytes(8, 1)}});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(preferredDesignator(std::span(whole).first(length))) << length;
  }
  Bytes overlong = whole;
  overlong[7] = 0xFF;  // the first descriptor's
  EXPECT_FALSE(preferredDesignator(overlong));
  overlong = whole;
  overlong[1] = 0x80;  // another page
  EXPECT_FALSE(preferredDesignator(overlong));
}

TEST(Inquiry, IsTrimmedAndPrintable) {
  std::string data(36, ' ');
  data[0] = '\x2C';  // not connected, type 12
  data.replace(8, 8, "VEND\x1b   ");
  data.replace(16, 16, std::string("Array 9\0\0\0\0\0\0\0\0\0", 16));
  const auto identity = parseInquiry(data);
  ASSERT_TRUE(identity);
  EXPECT_EQ(identity->vendor, "VEND?");
  EXPECT_EQ(identity->product, "Array 9");
  EXPECT_EQ(identity->type, 12);
  EXPECT_FALSE(parseInquiry(data.substr(0, 31)));
}

TEST(PathState, IsTheDisksFirstThenTheDriversUse) {
  struct Row {
    std::optional<std::string_view> device, access;
    std::optional<bool> used;
    int byte;
  };
  const Row rows[] = {
      {"running\n", "active/optimized\n", true, 0x00},
      {"running\n", "active/non-optimized\n", true, 0x01},
      {"running\n", "standby\n", false, 0x82},
      {"running\n", "unavailable\n", true, 0x03},
      {"running\n", "transitioning\n", false, 0x8F},
      {"running\n", "of some later kernel\n", true, 0x03},
      {"live\n", std::nullopt, false, 0x80},
      {"offline\n", "active/optimized\n", false, 0x03},  // not disabled: it cannot be used
      {std::nullopt, std::nullopt, std::nullopt, 0x00},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(pathStateByte(row.device, row.access, row.used), row.byte)
        << row.device.value_or("-") << ' ' << row.access.value_or("-");
  }
}

}  // namespace
}  // namespace tavrenix::sys
