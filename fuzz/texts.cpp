// Small texts of the kernel, udevd, devices and multipathd. The first byte chooses the parser (see
// run()). Values must be bounded and printable, and a value that is written again must mean the
// same.
#include "fuzz/promise.hpp"
#include "linux/kernel/disk_counters.hpp"
#include "linux/registry/driver_records.hpp"
#include "linux/registry/selectors.hpp"
#include "linux/text/identity.hpp"
#include "linux/text/messages.hpp"
#include "runtime/byte_text.hpp"
#include "tests/linux/fake_ports.hpp"

using namespace tavrenix;
using namespace tavrenix::sys;
using fuzz::expect;

namespace {

void readReply(std::string_view text) {
  const auto meaning = parseDaemonReply(text);
  expect(meaning == parseDaemonReply(std::string(trim(text)) + '\n'), "padding says nothing");
  const auto frame = frameDaemonCommand(text);
  expect(!frame || frame->size() == sizeof(std::size_t) + text.size() + 1, "a command is framed");
}

void readUevent(std::string_view message) {
  if (const auto event = parseUevent(message)) concernsStorage(*event);
}

void readNames(std::string_view text) {
  expect(decodeHexEscapes(text).size() <= text.size(), "escapes only shrink");
  const auto label = fileSystemLabel(std::string("E:ID_FS_USAGE=filesystem\n").append(text));
  expect(!label || (!label->empty() && fuzz::isShown(*label)), "a label is printable");
  for (const auto& uuid : {std::string(text), std::string(kMultipathUuidPrefix).append(text)}) {
    const auto bytes = designatorOf(uuid);
    expect(bytes.has_value() == isMultipathUuid(uuid), "a map's uuid names a designator");
    expect(!bytes || (!bytes->empty() && bytes->size() <= 127), "a designator is bounded");
  }
  if (const auto identity = parseInquiry(text)) {
    expect(identity->vendor.size() <= 8 && identity->product.size() <= 16 && identity->type < 32 &&
               fuzz::isShown(identity->vendor) && fuzz::isShown(identity->product),
           "an identity fits its fields and is printable");
  }
}

void readAttribute(std::string_view text) {
  if (const auto place = parsePlace(text)) {
    expect(isDeviceName(place->name), "a place ends in a name that leads nowhere else");
    expect(pathIdentifier(*place, {4095, 1048575}).size() <= 15, "a path's identifier is short");
  }
  if (const auto device = parseDeviceNumber(text)) {
    expect(parseDeviceNumber(device->text()) == device, "a device's number is read as written");
  }
  parseBlockStat(text);
  DiskCounters counters{std::string(text)};
  const auto own = counters.take({8, 0});
  expect(!own || (own->size() <= text.size() && !counters.take({8, 0})), "counters are taken once");
  const auto state = pathStateByte({0, std::string(text)}, {0, std::string(text)}, false);
  expect((state & 0x70) == 0, "bits without a meaning are not set");
}

void rewrite(const MultipathTable& table, const Selector& selector) {
  expect(table.initialGroup <= table.groups.size(), "the initial group is one of the groups");
  expect(parseMultipathTable(formatMultipathTable(table)) == table, "a table is read as written");
  const MultipathTable changed = withSelector(table, selector, 7);
  expect(parseMultipathTable(formatMultipathTable(changed)) == changed, "and with a new selector");
  expect(table.groups.empty() || commonSelector(changed) == selector.name, "in all its groups");
  expect(repeatCount(changed) == 0 || repeatCount(changed) == 7, "and on all its paths");
  expect(differInSelectorsAlone(table, changed), "all else stays");
}

// A table line and a status line.
void readMap(std::string_view lines) {
  const auto table = parseMultipathTable(fuzz::takeUpTo('\n', lines));
  const auto status = parseMultipathStatus(lines);
  for (const auto& group : status ? status->groups : std::vector<StatusGroup>()) {
    for (const auto& path : group.paths) {
      expect(status->uses(path.device).has_value(), "a path of the status is found");
    }
  }
  for (const auto name : {kRoundRobinSelector, std::string_view("service-time")}) {
    if (table) rewrite(*table, *selectorNamed(name));
  }
}

}  // namespace

// The letters that the seeds begin with: 'd' a daemon's reply, 'a' an attribute, 'r' a map's lines,
// 'c' an event of a change.
void fuzz::run(std::string_view input) {
  if (input.empty()) return;
  const std::string_view text = input.substr(1);
  expect(fuzz::isShown(ob::printable(text)), "what is made printable is");
  readNames(text);
  constexpr void (*kReaders[])(std::string_view) = {readReply, readAttribute, readMap, readUevent};
  kReaders[static_cast<unsigned char>(input[0]) % std::size(kReaders)](text);
}
