// The public keys and values in one table, in the order of their declarations in <tavrenix/mpio.h>.
// The library exports each under its name. The names in the registry are different objects
// (registry_names.hpp).
#pragma once

#include "runtime/string.hpp"

#define TAVRENIX_PUBLIC_STRINGS(X)                                                               \
  X(kMPIOLogicalUnitStatusChangedNotification, "Logical Unit Status Changed")                    \
  X(kMPIOLogicalUnitInvalidatedNotification, "Logical Unit Invalidated")                         \
  X(kMPIOLogicalUnitAppearedNotification, "Logical Unit Appeared")                               \
  X(kMPIOLogicalUnitPathAppearedNotification, "Logical Unit Path Appeared")                      \
  X(kMPIOLogicalUnitDisappearedNotification, "Logical Unit Disappeared")                         \
  X(kMPIOLogicalUnitPathDisappearedNotification, "Logical Unit Path Disappeared")                \
  X(kMPIOLogicalUnitIdentifierKey, "Logical Unit Identifier")                                    \
  X(kMPIOLogicalUnitAliasKey, "Logical Unit Alias")                                              \
  X(kMPIOLogicalUnitAlgorithmKey, "Logical Unit Algorithm")                                      \
  X(kMPIOLogicalUnitVendorIDKey, "Logical Unit Vendor ID")                                       \
  X(kMPIOLogicalUnitProductIDKey, "Logical Unit Product ID")                                     \
  X(kMPIOLogicalUnitVolumesKey, "Logical Unit Volumes Dictionary Array")                         \
  X(kMPIOLogicalUnitVolumeNameKey, "Logical Unit Volume Name")                                   \
  X(kMPIOLogicalUnitVolumeSizeKey, "Logical Unit Volume Size")                                   \
  /* The device's name, not a path in the file system. Fixed: clients depend on the text. */     \
  X(kMPIOLogicalUnitVolumeMountPointKey, "Logical Unit Volume Mount Point")                      \
  X(kMPIOLogicalUnitPathIdentifierKey, "Logical Unit Path Identifier")                           \
  X(kMPIOLogicalUnitPathStateKey, "Logical Unit Path State")                                     \
  X(kMPIOLogicalUnitPathInterconnectKey, "Logical Unit Path Interconnect")                       \
  X(kMPIOLogicalUnitPathHostPortIdentifierKey, "Logical Unit Path Host Port Identifier")         \
  /* Has the text of the path state key. The library itself does not use it. */                  \
  X(kMPIOLogicalUnitPathAccessStateKey, "Logical Unit Path State")                               \
  X(kMPIOPathStateActiveOptimized, "Active Optimized")                                           \
  X(kMPIOPathStateActiveNonOptimized, "Active Non-Optimized")                                    \
  X(kMPIOPathStateStandby, "Standby")                                                            \
  X(kMPIOPathStateUnavailable, "Unavailable")                                                    \
  X(kMPIOLogicalUnitPathEnabledKey, "Logical Unit Path Enabled")                                 \
  X(kMPIOLogicalUnitAlgorithmRoundRobin, "Logical Unit Algorithm Round Robin")                   \
  X(kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Logical Unit Algorithm Least Queue Depth")        \
  X(kMPIOLogicalUnitAlgorithmLeastBytes, "Logical Unit Algorithm Least Bytes")                   \
  X(kMPIOLogicalUnitBatchCountKey, "Logical Unit Batch Count")                                   \
  X(kMPIOLogicalUnitStatisticsSamplingDateKey, "Logical Unit Statistics Sampling Date")          \
  X(kMPIOLogicalUnitStatisticsBytesSentKey, "Logical Unit Statistics Cumulative Bytes Sent")     \
  X(kMPIOLogicalUnitStatisticsBytesReceivedKey,                                                  \
    "Logical Unit Statistics Cumulative Bytes Received")                                         \
  X(kMPIOLogicalUnitStatisticsTotalBytesKey,                                                     \
    "Logical Unit Statistics Cumulative Total Bytes Transferred")                                \
  X(kMPIOLogicalUnitStatisticsTotalCommandsKey,                                                  \
    "Logical Unit Statistics Cumulative Total Commands Processed")                               \
  X(kMPIOLogicalUnitPathStatisticsSamplingDateKey, "Logical Unit Path Statistics Sampling Date") \
  X(kMPIOLogicalUnitPathStatisticsPathStateKey, "Logical Unit Path Statistics Path State")       \
  X(kMPIOLogicalUnitPathStatisticsBytesSentKey,                                                  \
    "Logical Unit Path Statistics Cumulative Bytes Sent")                                        \
  X(kMPIOLogicalUnitPathStatisticsBytesReceivedKey,                                              \
    "Logical Unit Path Statistics Cumulative Bytes Received")                                    \
  /* Lacks the word "Cumulative" of its neighbours. Fixed: clients depend on the text. */        \
  X(kMPIOLogicalUnitPathStatisticsTotalBytesKey,                                                 \
    "Logical Unit Path Statistics Total Bytes Transferred")                                      \
  X(kMPIOLogicalUnitPathStatisticsTotalCommandsKey,                                              \
    "Logical Unit Path Statistics Cumulative Total Commands Processed")                          \
  X(kMPIOErrorResultCodeKey, "Error Result Code")

namespace tavrenix::keys {

#define TAVRENIX_PUBLIC_STRING(name, text) OB_CONSTANT_STRING(name, text);
TAVRENIX_PUBLIC_STRINGS(TAVRENIX_PUBLIC_STRING)
#undef TAVRENIX_PUBLIC_STRING

}  // namespace tavrenix::keys
