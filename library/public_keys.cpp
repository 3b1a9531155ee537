// The public strings under their exported names. The model uses the same objects, so clients may
// compare keys by identity.
#include "model/keys.hpp"

#include <tavrenix/mpio.h>

#include "model/errors.hpp"

namespace {
constexpr bool same(std::int64_t exported, tavrenix::MPIOErrorCode used) {
  return exported == used;
}
}  // namespace

static_assert(same(kMPIOErrorBadArgument, tavrenix::kErrorBadArgument));
static_assert(same(kMPIOErrorServiceNotFound, tavrenix::kErrorServiceNotFound));
static_assert(same(kMPIOErrorPropertyWriteFailed, tavrenix::kErrorPropertyWriteFailed));
static_assert(same(kMPIOErrorPathsLackIdentifiers, tavrenix::kErrorPathsLackIdentifiers));
static_assert(same(kMPIOErrorStatisticsUnavailable, tavrenix::kErrorStatisticsUnavailable));
static_assert(same(kMPIOErrorNotificationFailed, tavrenix::kErrorNotificationFailed));
static_assert(same(kMPIOErrorNoResources, tavrenix::kErrorNoResources));

extern "C" {
#define TAVRENIX_EXPORT(name, text) \
  const ObStringRef name = reinterpret_cast<ObStringRef>(&tavrenix::keys::name##Storage);
TAVRENIX_PUBLIC_STRINGS(TAVRENIX_EXPORT)
#undef TAVRENIX_EXPORT
}
