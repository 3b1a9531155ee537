#include "linux/registry/linux_tunable.hpp"

#include "linux/registry/driver_records.hpp"

namespace tavrenix::sys {

std::optional<SCSILogicalUnitStatistics> LinuxTunable::unitRecord(EntryID unit) {
  if (keyOf(unit).kind != Kind::kUnit) return std::nullopt;
  const auto text = machine_.counters(unit);
  return text ? parseBlockStat(*text) : std::nullopt;
}

std::optional<SCSIPathStatistics> LinuxTunable::pathRecord(EntryID unit, EntryID path) {
  const auto states = machine_.statesOf(unit, path);
  if (!states) return std::nullopt;
  const auto text = machine_.counters(path);
  const auto counters = text ? parseBlockStat(*text) : std::nullopt;
  if (!counters) return std::nullopt;

  SCSIPathStatistics record;
  record.bytesSent = counters->bytesSent;
  record.bytesReceived = counters->bytesReceived;
  record.commandsProcessed = counters->commandsProcessed;
  std::optional<bool> used;
  if (const auto status = machine_.status(unit)) {
    used = status->uses(keyOf(path).device()).value_or(false);  // false if the map has let go of it
  }
  record.state = pathStateByte(states->device, states->access, used);
  return record;
}

}  // namespace tavrenix::sys
