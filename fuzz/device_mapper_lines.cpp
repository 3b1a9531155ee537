// Table and status lines of multipath maps, the first line and the second of the input: what is
// read is written again with the same meaning, and a map whose selector is changed is under the new
// table or under the old one, whatever fails on the way.
#include <algorithm>

#include "fuzz/promise.hpp"
#include "linux/multipath_status.hpp"
#include "linux/multipath_table.hpp"
#include "linux/reload.hpp"
#include "tests/linux/fake_device_mapper.hpp"

using namespace tavrenix;
using namespace tavrenix::sys;
using fuzz::expect;

namespace {

const Selector& selectorAt(std::size_t number) {
  constexpr std::string_view kNames[] = {kRoundRobinSelector, "queue-length", "service-time"};
  return *selectorNamed(kNames[number % std::size(kNames)]);
}

void expectFaithful(const MultipathTable& table) {
  const std::string line = formatMultipathTable(table);
  expect(parseMultipathTable(line) == table, "a table is read as it was written");
  for (std::size_t number = 0; number < 3; ++number) {
    const Selector& selector = selectorAt(number);
    const MultipathTable changed = withSelector(table, selector, 7);
    expect(parseMultipathTable(formatMultipathTable(changed)) == changed,
           "a table under another selector is one");
    expect(table.groups.empty() || commonSelector(changed) == selector.name,
           "all groups change their selector");
    expect(repeatCount(changed) == 0 || repeatCount(changed) == 7, "all paths change their count");
    expect(changed.features == table.features && changed.handler == table.handler &&
               changed.initialGroup == table.initialGroup,
           "all else stays");
  }
}

constexpr DeviceNumber kMap{254, 0};

// faults: a bit for each operation of the driver that fails once.
void expectWholeReload(const MultipathTable& table, const MultipathStatus& status,
                       std::size_t faults) {
  test::FakeDeviceMapper port;
  port.clampsRepeats = faults % 2 != 0;
  auto& map = port.add(kMap, "map", "mpath-x", "0 0 0 0 ");
  if (port.load(kMap, {0, 16384, "multipath", formatMultipathTable(table)}, false) != 0) return;
  port.resume(kMap);
  const auto inForce = parseMultipathTable(map.table.line);
  for (const auto& group : inForce->groups) {
    for (const auto& path : group.paths) {
      if (status.uses(path.device) == false) map.failed.insert(path.device);
    }
  }
  const auto failed = map.failed;
  constexpr const char* kFaults[] = {"load", "resume", "message", "swap"};
  for (std::size_t i = 0; i < std::size(kFaults); ++i) {
    if ((faults >> (i + 1)) % 2 != 0) port.faults[kFaults[i]] = -EIO;
  }

  const Selector& selector = selectorAt(faults >> 5);
  const int result = reload(port, kMap, selector, 2);
  const auto found = parseMultipathTable(map.table.line);
  auto wanted = result == 0 ? withSelector(*inForce, selector, 2) : *inForce;
  if (found) wanted.initialGroup = found->initialGroup;  // tells the group in use, which may move
  // Two faults may meet so that the way back fails too; nothing can be promised then.
  const bool single = (faults & 0x1E) == 0 || __builtin_popcountll(faults & 0x1E) == 1;
  if (result != 0 && !single) return;
  expect(found == wanted, "the new table is in force or the old one");
  expect(map.failed == failed, "failed paths stay failed");
  expect(!map.suspended && !map.hasLoaded, "nothing is left half done");
}

void expectBounded(const MultipathStatus& status, std::string_view line) {
  std::size_t paths = 0;
  for (const auto& group : status.groups) {
    expect(group.state == 'A' || group.state == 'D' || group.state == 'E', "a group has a state");
    paths += group.paths.size();
    for (const auto& path : group.paths) {
      expect(status.uses(path.device).has_value(), "a path that is told of is found");
    }
  }
  expect(paths * 5 <= line.size(), "no path is made up");  // each is "8:0 A" at the least
}

}  // namespace

// The first byte chooses the faults of the driver.
void tavrenix::fuzz::run(std::string_view input) {
  if (input.empty()) return;
  std::string_view rest = input.substr(1);
  const auto table = parseMultipathTable(fuzz::takeUpTo('\n', rest));
  const auto status = parseMultipathStatus(rest);
  if (status) expectBounded(*status, rest);
  if (!table) return;
  expectFaithful(*table);
  expectWholeReload(*table, status.value_or(MultipathStatus{}),
                    static_cast<unsigned char>(input[0]));
}
