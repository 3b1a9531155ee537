#include "linux/tunable.hpp"

#include <cerrno>
#include <cstring>

#include "linux/block_stat.hpp"
#include "linux/path_state.hpp"

namespace tavrenix::sys {

namespace {

int fail(int error) {
  errno = error;
  return -1;
}

template <class Record>
int give(const std::optional<Record>& record, void* oldValue, std::size_t* oldLength) {
  if (!record) return fail(ENXIO);
  if (oldValue == nullptr || oldLength == nullptr) return fail(EINVAL);
  if (*oldLength < sizeof(Record)) return fail(ENOMEM);
  std::memcpy(oldValue, &*record, sizeof(Record));
  *oldLength = sizeof(Record);
  return 0;
}

}  // namespace

int LinuxTunable::sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                               const void* newValue, std::size_t newLength) {
  if (std::strcmp(name, kStatisticsTunable) != 0) return fail(ENOENT);
  SCSIMPIOStatisticsRequest request;
  if (newValue == nullptr || newLength != sizeof request) return fail(EINVAL);
  std::memcpy(&request, newValue, sizeof request);
  if (request.signature != kStatisticsSignature) return fail(EINVAL);
  switch (request.requestType) {
    case kLogicalUnitStatistics:
      return give(unitRecord(request.logicalUnitEntryID), oldValue, oldLength);
    case kPathStatistics:
      return give(pathRecord(request.logicalUnitEntryID, request.pathEntryID), oldValue, oldLength);
    case kConfigurationGeneration:
      return give(std::optional(generation()), oldValue, oldLength);
    default:
      return fail(EINVAL);
  }
}

std::uint32_t LinuxTunable::generation() {
  return permitted_ ? notifications_.shown(machine_.generation()) : 0;
}

std::optional<SCSILogicalUnitStatistics> LinuxTunable::unitRecord(EntryID unit) {
  if (nameOf(unit).kind != Kind::kUnit) return std::nullopt;
  const auto text = machine_.counters(unit);
  return text ? parseBlockStat(*text) : std::nullopt;
}

std::optional<SCSIPathStatistics> LinuxTunable::pathRecord(EntryID unit, EntryID path) {
  const auto place = machine_.place(path);
  if (!place) return std::nullopt;
  const auto [deviceState, accessState] =
      machine_.files().readTogether<2>({place->device + "/state", place->device + "/access_state"});
  machine_.answered();
  const auto text = machine_.counters(path);
  const auto counters = text ? parseBlockStat(*text) : std::nullopt;
  if (!counters) return std::nullopt;

  SCSIPathStatistics record;
  record.bytesSent = counters->bytesSent;
  record.bytesReceived = counters->bytesReceived;
  record.commandsProcessed = counters->commandsProcessed;
  std::optional<bool> used;
  if (const auto status = machine_.status(unit)) {
    used = status->uses(nameOf(path).device()).value_or(false);  // no longer in the map: not used
  }
  record.state = pathStateByte(deviceState, accessState, used);
  return record;
}

}  // namespace tavrenix::sys
