// The system's error objects: the message text is the domain, the code one of kMPIOError...
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "runtime/error.hpp"

namespace tavrenix {

enum MPIOErrorCode : std::int64_t {
  kErrorBadArgument = 0x08000001,
  kErrorServiceNotFound = 0x08000002,
  kErrorPropertyWriteFailed = 0x08000003,
  kErrorPathsLackIdentifiers = 0x08000004,
  kErrorStatisticsUnavailable = 0x08000005,
  kErrorNotificationFailed = 0x08000006,
  kErrorNoResources = 0x08000007,
};

// Where a model operation stores its error: an object in the thread's pool, borrowed from there, or
// null where the failure has none. Null where the caller does not want it.
using ErrorOut = const ob::Error**;

// The error object, kept by the thread's innermost pool. resultCode becomes "Error Result Code" in
// the user information; without one there is no user information.
const ob::Error* MPIOErrorCreate(std::string_view message, MPIOErrorCode code,
                                 std::optional<std::int32_t> resultCode = std::nullopt);

}  // namespace tavrenix
