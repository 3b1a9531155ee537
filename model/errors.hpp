// Error objects. The domain of an error is its message, and its code is an MPIOErrorCode.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "runtime/collections.hpp"

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

// Points to where a function stores its error object, or null if the failure has none. A caller
// that wants no error passes null. Ownership: the object belongs to the thread's innermost pool.
using ErrorOut = const ob::Error**;

// Returns an error object. A result code becomes its user information, under "Error Result Code".
// Ownership: the object belongs to the thread's innermost pool.
const ob::Error* MPIOErrorCreate(std::string_view message, MPIOErrorCode code,
                                 std::optional<std::int32_t> resultCode = std::nullopt);

}  // namespace tavrenix
