// The seam to the driver's kernel tunable, and the records that go through it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrenix {

inline constexpr char kStatisticsTunable[] = "debug.SCSIMPIOStatistics";

class MPIOKernelTunable {
 public:
  virtual ~MPIOKernelTunable() = default;
  // As the system call of that name: newValue goes in, the answer comes out in oldValue, whose room
  // *oldLength tells before and whose filled length after. 0 is success. Any thread.
  virtual int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                           const void* newValue, std::size_t newLength) = 0;
};

inline constexpr std::uint32_t kStatisticsSignature = 0x53414D53;

enum StatisticsRequestType : std::uint32_t {
  kLogicalUnitStatistics = 0,
  kPathStatistics = 1,
  kConfigurationGeneration = 2,  // the answer is one unsigned 32-bit number
};

// The request: native byte order, 24 bytes, no padding.
struct SCSIMPIOStatisticsRequest {
  std::uint32_t signature = kStatisticsSignature;
  std::uint32_t requestType = kLogicalUnitStatistics;
  std::uint64_t logicalUnitEntryID = 0;
  std::uint64_t pathEntryID = 0;
};
static_assert(sizeof(SCSIMPIOStatisticsRequest) == 24);

// Counters since the device appeared.
struct SCSILogicalUnitStatistics {
  std::uint64_t bytesSent = 0;
  std::uint64_t bytesReceived = 0;
  std::uint64_t commandsProcessed = 0;
};
static_assert(sizeof(SCSILogicalUnitStatistics) == 24);

// Exactly 25 bytes on both sides, so no padding behind the state byte.
#pragma pack(push, 1)
struct SCSIPathStatistics {
  std::uint64_t bytesSent = 0;
  std::uint64_t bytesReceived = 0;
  std::uint64_t commandsProcessed = 0;
  std::uint8_t state =
      0;  // bits 0 to 3: access state as in SPC; bit 7: disabled; others mean nothing
};
#pragma pack(pop)
static_assert(sizeof(SCSIPathStatistics) == 25);

inline constexpr std::uint8_t kPathStateAccessMask = 0x0F;
inline constexpr std::uint8_t kPathStateDisabledBit = 0x80;

}  // namespace tavrenix
