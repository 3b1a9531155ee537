// Small texts of the kernel and of udev: attributes of sysfs, links, uuids, records, dates.
#include <algorithm>

#include "fuzz/promise.hpp"
#include "lab/value_text.hpp"
#include "linux/block_stat.hpp"
#include "linux/device_number.hpp"
#include "linux/disk_counters.hpp"
#include "linux/path_state.hpp"
#include "linux/place.hpp"
#include "linux/udev_record.hpp"
#include "linux/wwid.hpp"
#include "runtime/string.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

bool isShown(std::string_view text) {
  return text.size() <= 255 && ob::isUTF8(text) && printable(text) == text &&
         std::none_of(text.begin(), text.end(),
                      [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; });
}

void expectPlace(const Place& place) {
  expect(isDeviceName(place.name) && place.name.find('/') == std::string::npos,
         "a place ends in a name that leads nowhere else");
  for (const std::uint32_t minor : {0U, 1048575U}) {
    const auto bytes = pathIdentifier(place.address, 4095, minor);
    expect(!bytes.empty() && bytes.size() <= 15, "a path's identifier is short");
  }
}

void expectUuid(std::string_view uuid) {
  const auto bytes = designatorOf(uuid);
  expect(bytes.has_value() == isMultipathUuid(uuid), "a multipath map's uuid names a designator");
  expect(!bytes || (!bytes->empty() && bytes->size() <= 64), "a designator is bounded");
}

void expectCounters(std::string_view table) {
  DiskCounters counters{std::string(table)};
  const auto own = counters.take({8, 0});
  expect(!own || own->size() <= table.size(), "a device's counters stand in the table");
  expect(!own || (counters.taken({8, 0}) && !counters.take({8, 0})), "counters are told once");
}

}  // namespace

void tavrenix::fuzz::run(std::string_view text) {
  expect(isShown(printable(text)), "what is made printable is");
  expect(decodeUdevEscapes(text).size() <= text.size(), "escapes only shrink");
  const auto label = fileSystemLabel(text);
  expect(!label || (!label->empty() && isShown(*label)), "a label is printable");
  if (const auto place = parsePlace(text)) expectPlace(*place);
  expectUuid(text);
  expectUuid(std::string(kMultipathUuidPrefix).append(text));
  if (const auto device = parseDeviceNumber(text)) {
    expect(parseDeviceNumber(device->text()) == device, "a device's number is read as written");
  }
  parseBlockStat(text);
  expectCounters(text);
  const auto state = pathStateByte(text, text, false);
  expect((state & 0x70) == 0, "bits without a meaning are not set");
  if (const auto bytes = lab::bytesFromHex(text)) {
    const std::string hex = lab::hexFromBytes(*bytes);
    expect(hex.size() == text.size() && lab::bytesFromHex(hex) == bytes,
           "hexadecimal digits are read as written");
  }
  lab::nanosecondsFromDate(text);
}
