#include "linux/block_stat.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

constexpr std::size_t kMostNumbers = 64;
constexpr std::size_t kFewestNumbers = 11;
// Whatever the block size of the device.
constexpr std::uint64_t kBytesPerSector = 512;

enum Field : std::size_t {
  kReads = 0,
  kSectorsRead = 2,
  kWrites = 4,
  kSectorsWritten = 6,
  kDiscards = 11,
  kFlushes = 15,
};

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

}  // namespace tavrenix::sys
