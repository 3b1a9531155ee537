// The seam to what a host knows of its storage beyond the registry: states, names and counters for
// monitoring. Clients see it through <tavrenix/details.h>.
#pragma once

#include "host/registry.hpp"

// The keys in the order of their declaration in <tavrenix/details.h>, which describes the values.
#define TAVRENIX_DETAIL_KEYS(X)                                                   \
  X(kMPIOLogicalUnitDetailDeviceKey, "Logical Unit Device")                       \
  X(kMPIOLogicalUnitDetailMapNameKey, "Logical Unit Map Name")                    \
  X(kMPIOLogicalUnitDetailWWIDKey, "Logical Unit WWID")                           \
  X(kMPIOLogicalUnitDetailSizeKey, "Logical Unit Size")                           \
  X(kMPIOLogicalUnitDetailSelectorKey, "Logical Unit Selector")                   \
  X(kMPIOLogicalUnitDetailQueueingKey, "Logical Unit Queueing")                   \
  X(kMPIOLogicalUnitDetailHardwareHandlerKey, "Logical Unit Hardware Handler")    \
  X(kMPIOLogicalUnitDetailSuspendedKey, "Logical Unit Suspended")                 \
  X(kMPIOLogicalUnitDetailOpenCountKey, "Logical Unit Open Count")                \
  X(kMPIOLogicalUnitDetailGroupStatesKey, "Logical Unit Group States")            \
  X(kMPIOLogicalUnitPathDetailDeviceKey, "Logical Unit Path Device")              \
  X(kMPIOLogicalUnitPathDetailDeviceNumberKey, "Logical Unit Path Device Number") \
  X(kMPIOLogicalUnitPathDetailAddressKey, "Logical Unit Path Address")            \
  X(kMPIOLogicalUnitPathDetailGroupKey, "Logical Unit Path Group")                \
  X(kMPIOLogicalUnitPathDetailDriverStateKey, "Logical Unit Path Driver State")   \
  X(kMPIOLogicalUnitPathDetailFailureCountKey, "Logical Unit Path Failure Count") \
  X(kMPIOLogicalUnitPathDetailDeviceStateKey, "Logical Unit Path Device State")   \
  X(kMPIOLogicalUnitPathDetailAccessStateKey, "Logical Unit Path Access State")   \
  X(kMPIOLogicalUnitPathDetailHostPortKey, "Logical Unit Path Host Port")         \
  X(kMPIOLogicalUnitPathDetailTargetPortKey, "Logical Unit Path Target Port")     \
  X(kMPIOLogicalUnitPathDetailErrorCountKey, "Logical Unit Path Error Count")     \
  X(kMPIOLogicalUnitPathDetailTimeoutCountKey, "Logical Unit Path Timeout Count") \
  X(kMPIOLogicalUnitPathDetailInFlightKey, "Logical Unit Path In Flight")         \
  X(kMPIOHostDetailBackingKey, "Host Backing")                                    \
  X(kMPIOHostDetailDriverPresentKey, "Host Driver Present")                       \
  X(kMPIOHostDetailPermittedKey, "Host Permitted")                                \
  X(kMPIOHostDetailKernelReleaseKey, "Host Kernel Release")                       \
  X(kMPIOHostDetailGenerationKey, "Host Generation")

namespace tavrenix {

namespace keys {

#define TAVRENIX_DETAIL_KEY(name, text) OB_CONSTANT_STRING(name, text);
TAVRENIX_DETAIL_KEYS(TAVRENIX_DETAIL_KEY)
#undef TAVRENIX_DETAIL_KEY

}  // namespace keys

// Thread safety: every function may be called on any thread.
// Errors: functions throw nothing but std::bad_alloc.
class MPIODetails {
 public:
  virtual ~MPIODetails() = default;
  // Both functions for an entry return null if it is gone or is of another kind.
  virtual ob::Ref<const ob::Dictionary> ofLogicalUnit(EntryID unit) = 0;
  // unit: the entry of the logical unit that the path belongs to, or 0 if that is not known.
  virtual ob::Ref<const ob::Dictionary> ofPath(EntryID unit, EntryID path) = 0;
  // Returns the details of the host, never null. The generation is not among them: it comes from
  // the tunable.
  virtual ob::Ref<const ob::Dictionary> ofHost() = 0;
};

}  // namespace tavrenix
