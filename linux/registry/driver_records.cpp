#include "linux/registry/driver_records.hpp"

#include "linux/text/words.hpp"

namespace tavrenix::sys {

namespace {

constexpr std::size_t kMostNumbers = 64;
constexpr std::size_t kFewestNumbers = 11;
// The unit of the counters, which does not depend on the block size of the device.
constexpr std::uint64_t kBytesPerSector = 512;

enum Field : std::size_t {
  kReads = 0,
  kSectorsRead = 2,
  kWrites = 4,
  kSectorsWritten = 6,
  kDiscards = 11,
  kFlushes = 15,
};

constexpr std::uint8_t kUnavailable = 3;

struct AccessState {
  std::string_view name;  // as the kernel's scsi_access_state_name writes it
  std::uint8_t code;      // as SPC numbers it
};
constexpr AccessState kAccessStates[] = {
    {"active/optimized", 0}, {"active/non-optimized", 1}, {"standby", 2},
    {"unavailable", 3},      {"lba-dependent", 4},        {"offline", 14},
    {"transitioning", 15},
};

std::uint8_t accessCode(std::string_view name) {
  for (const auto& state : kAccessStates) {
    if (state.name == name) return state.code;
  }
  return kUnavailable;  // "unknown", and what later kernels may say
}

// A SCSI disk that takes requests is "running". Disks of other drivers are "live".
bool isUsable(std::string_view deviceState) {
  return deviceState == "running" || deviceState == "live";
}

}  // namespace

std::optional<SCSILogicalUnitStatistics> parseBlockStat(std::string_view text) {
  std::uint64_t numbers[kMostNumbers] = {};  // absent counters count nothing
  std::size_t count = 0;
  for (auto word = takeWord(text); !word.empty(); word = takeWord(text)) {
    const auto number = parseNumber(word);
    if (!number || count == kMostNumbers) return std::nullopt;
    numbers[count++] = *number;
  }
  if (count < kFewestNumbers) return std::nullopt;
  return SCSILogicalUnitStatistics{
      .bytesSent = numbers[kSectorsWritten] * kBytesPerSector,
      .bytesReceived = numbers[kSectorsRead] * kBytesPerSector,
      .commandsProcessed =
          numbers[kReads] + numbers[kWrites] + numbers[kDiscards] + numbers[kFlushes],
  };
}

std::uint8_t pathStateByte(const FileText& deviceState, const FileText& accessState,
                           std::optional<bool> used) {
  const bool usable = deviceState ? isUsable(trim(deviceState.text)) : deviceState.isAbsent();
  const bool accessKnown = accessState || accessState.isAbsent();
  if (!usable || !accessKnown || !used) return kUnavailable;
  const std::uint8_t access = accessState ? accessCode(trim(accessState.text)) : std::uint8_t{0};
  // The daemon fails a path if its port is unavailable. Then that is the state of the path, and the
  // administrator has not disabled it.
  const bool disabled = !*used && access != kUnavailable;
  return static_cast<std::uint8_t>(access | (disabled ? kPathStateDisabledBit : 0));
}

}  // namespace tavrenix::sys
