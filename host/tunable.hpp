// The seam to the driver's kernel tunable, and the records that go through it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tavrenix {

inline constexpr char kStatisticsTunable[] = "debug.SCSIMPIOStatistics";

class MPIOKernelTunable {
 public:
  virtual ~MPIOKernelTunable() = default;
  // Does what the system call of that name does. newValue is the request. The answer is written to
  // oldValue. *oldLength is the room there, and becomes the length of the answer.
  // Errors: returns 0 on success and another number otherwise.
  // Thread safety: any thread.
  virtual int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                           const void* newValue, std::size_t newLength) = 0;
};

inline constexpr std::uint32_t kStatisticsSignature = 0x53414D53;

enum StatisticsRequestType : std::uint32_t {
  kLogicalUnitStatistics = 0,
  kPathStatistics = 1,
  kConfigurationGeneration = 2,  // the answer is one unsigned 32-bit number
};

// The request that goes in as newValue: 24 bytes in native byte order, without padding.
struct SCSIMPIOStatisticsRequest {
  std::uint32_t signature = kStatisticsSignature;
  std::uint32_t requestType = kLogicalUnitStatistics;
  std::uint64_t logicalUnitEntryID = 0;
  std::uint64_t pathEntryID = 0;
};
static_assert(sizeof(SCSIMPIOStatisticsRequest) == 24);

// Counters since the device appeared. Sent bytes go to the storage, received bytes come from it.
struct SCSILogicalUnitStatistics {
  std::uint64_t bytesSent = 0;
  std::uint64_t bytesReceived = 0;
  std::uint64_t commandsProcessed = 0;
};
static_assert(sizeof(SCSILogicalUnitStatistics) == 24);

// The driver's record has 25 bytes, so no padding follows the state byte.
#pragma pack(push, 1)
struct SCSIPathStatistics {
  std::uint64_t bytesSent = 0;
  std::uint64_t bytesReceived = 0;
  std::uint64_t commandsProcessed = 0;
  // Bits 0 to 3: the asymmetric access state of SPC. Bit 7: the path is disabled. The others mean
  // nothing.
  std::uint8_t state = 0;
};
#pragma pack(pop)
static_assert(sizeof(SCSIPathStatistics) == 25);

inline constexpr std::uint8_t kPathStateAccessMask = 0x0F;
inline constexpr std::uint8_t kPathStateDisabledBit = 0x80;

// The tunable over records that a host supplies.
class StatisticsTunable : public MPIOKernelTunable {
 public:
  // Errors: returns -1 and sets errno: ENOENT for another name, EINVAL for a malformed request,
  // ENOMEM for too little room, ENXIO for an entry without a record.
  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) final;

 private:
  // Returns the configuration generation: clients scan if it differs from that of their last scan.
  virtual std::uint32_t generation() = 0;
  virtual std::optional<SCSILogicalUnitStatistics> unitRecord(std::uint64_t unit) = 0;
  virtual std::optional<SCSIPathStatistics> pathRecord(std::uint64_t unit, std::uint64_t path) = 0;
};

}  // namespace tavrenix
