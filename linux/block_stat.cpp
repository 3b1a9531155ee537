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
  const auto words = splitWords(text, kMostNumbers);
  if (!words || words->size() < kFewestNumbers) return std::nullopt;
  std::vector<std::uint64_t> numbers;
  for (const auto word : *words) {
    const auto number = parseNumber(word);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  numbers.resize(kMostNumbers);  // absent counters count nothing
  return SCSILogicalUnitStatistics{
      .bytesSent = numbers[kSectorsWritten] * kBytesPerSector,
      .bytesReceived = numbers[kSectorsRead] * kBytesPerSector,
      .commandsProcessed =
          numbers[kReads] + numbers[kWrites] + numbers[kDiscards] + numbers[kFlushes],
  };
}

}  // namespace tavrenix::sys
