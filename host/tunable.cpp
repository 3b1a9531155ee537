#include "host/tunable.hpp"

#include <cerrno>
#include <cstring>

namespace tavrenix {

namespace {

int fail(int error) {
  errno = error;
  return -1;
}

template <class Record>
int copyOut(const std::optional<Record>& record, void* oldValue, std::size_t* oldLength) {
  if (!record) return fail(ENXIO);
  if (oldValue == nullptr || oldLength == nullptr) return fail(EINVAL);
  if (*oldLength < sizeof(Record)) return fail(ENOMEM);
  std::memcpy(oldValue, &*record, sizeof(Record));
  *oldLength = sizeof(Record);
  return 0;
}

}  // namespace

int StatisticsTunable::sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                                    const void* newValue, std::size_t newLength) {
  if (std::strcmp(name, kStatisticsTunable) != 0) return fail(ENOENT);
  SCSIMPIOStatisticsRequest request;
  if (newValue == nullptr || newLength != sizeof request) return fail(EINVAL);
  std::memcpy(&request, newValue, sizeof request);
  if (request.signature != kStatisticsSignature) return fail(EINVAL);
  switch (request.requestType) {
    case kLogicalUnitStatistics:
      return copyOut(unitRecord(request.logicalUnitEntryID), oldValue, oldLength);
    case kPathStatistics:
      return copyOut(pathRecord(request.logicalUnitEntryID, request.pathEntryID), oldValue,
                     oldLength);
    case kConfigurationGeneration:
      return copyOut(std::optional(generation()), oldValue, oldLength);
    default:
      return fail(EINVAL);
  }
}

}  // namespace tavrenix
