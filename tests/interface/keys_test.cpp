// The exported constants: each one's text, and that no two of them are one object.
#include <gtest/gtest.h>
#include <tavrenix/mpio.h>

#include <set>

namespace {

struct Exported {
  ObStringRef constant;
  const char* text;
};

const Exported kExported[] = {
    {kMPIOLogicalUnitStatusChangedNotification, "Logical Unit Status Changed"},
    {kMPIOLogicalUnitInvalidatedNotification, "Logical Unit Invalidated"},
    {kMPIOLogicalUnitAppearedNotification, "Logical Unit Appeared"},
    {kMPIOLogicalUnitPathAppearedNotification, "Logical Unit Path Appeared"},
    {kMPIOLogicalUnitDisappearedNotification, "Logical Unit Disappeared"},
    {kMPIOLogicalUnitPathDisappearedNotification, "Logical Unit Path Disappeared"},
    {kMPIOLogicalUnitIdentifierKey, "Logical Unit Identifier"},
    {kMPIOLogicalUnitAliasKey, "Logical Unit Alias"},
    {kMPIOLogicalUnitAlgorithmKey, "Logical Unit Algorithm"},
    {kMPIOLogicalUnitVendorIDKey, "Logical Unit Vendor ID"},
    {kMPIOLogicalUnitProductIDKey, "Logical Unit Product ID"},
    {kMPIOLogicalUnitVolumesKey, "Logical Unit Volumes Dictionary Array"},
    {kMPIOLogicalUnitVolumeNameKey, "Logical Unit Volume Name"},
    {kMPIOLogicalUnitVolumeSizeKey, "Logical Unit Volume Size"},
    {kMPIOLogicalUnitVolumeMountPointKey, "Logical Unit Volume Mount Point"},
    {kMPIOLogicalUnitPathIdentifierKey, "Logical Unit Path Identifier"},
    {kMPIOLogicalUnitPathStateKey, "Logical Unit Path State"},
    {kMPIOLogicalUnitPathInterconnectKey, "Logical Unit Path Interconnect"},
    {kMPIOLogicalUnitPathHostPortIdentifierKey, "Logical Unit Path Host Port Identifier"},
    {kMPIOLogicalUnitPathAccessStateKey, "Logical Unit Path State"},
    {kMPIOPathStateActiveOptimized, "Active Optimized"},
    {kMPIOPathStateActiveNonOptimized, "Active Non-Optimized"},
    {kMPIOPathStateStandby, "Standby"},
    {kMPIOPathStateUnavailable, "Unavailable"},
    {kMPIOLogicalUnitPathEnabledKey, "Logical Unit Path Enabled"},
    {kMPIOLogicalUnitAlgorithmRoundRobin, "Logical Unit Algorithm Round Robin"},
    {kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Logical Unit Algorithm Least Queue Depth"},
    {kMPIOLogicalUnitAlgorithmLeastBytes, "Logical Unit Algorithm Least Bytes"},
    {kMPIOLogicalUnitBatchCountKey, "Logical Unit Batch Count"},
    {kMPIOLogicalUnitStatisticsSamplingDateKey, "Logical Unit Statistics Sampling Date"},
    {kMPIOLogicalUnitStatisticsBytesSentKey, "Logical Unit Statistics Cumulative Bytes Sent"},
    {kMPIOLogicalUnitStatisticsBytesReceivedKey,
     "Logical Unit Statistics Cumulative Bytes Received"},
    {kMPIOLogicalUnitStatisticsTotalBytesKey,
     "Logical Unit Statistics Cumulative Total Bytes Transferred"},
    {kMPIOLogicalUnitStatisticsTotalCommandsKey,
     "Logical Unit Statistics Cumulative Total Commands Processed"},
    {kMPIOLogicalUnitPathStatisticsSamplingDateKey, "Logical Unit Path Statistics Sampling Date"},
    {kMPIOLogicalUnitPathStatisticsPathStateKey, "Logical Unit Path Statistics Path State"},
    {kMPIOLogicalUnitPathStatisticsBytesSentKey,
     "Logical Unit Path Statistics Cumulative Bytes Sent"},
    {kMPIOLogicalUnitPathStatisticsBytesReceivedKey,
     "Logical Unit Path Statistics Cumulative Bytes Received"},
    {kMPIOLogicalUnitPathStatisticsTotalBytesKey,
     "Logical Unit Path Statistics Total Bytes Transferred"},
    {kMPIOLogicalUnitPathStatisticsTotalCommandsKey,
     "Logical Unit Path Statistics Cumulative Total Commands Processed"},
    {kMPIOErrorResultCodeKey, "Error Result Code"},
};

TEST(Keys, HaveTheirTextsAndAreObjectsOfTheirOwnThatOutliveEveryRelease) {
  std::set<ObStringRef> objects;
  for (const Exported& each : kExported) {
    for (int round = 0; round < 3; ++round) ObRelease(each.constant);
    EXPECT_STREQ(ObStringGetUTF8(each.constant), each.text);
    EXPECT_EQ(ObGetTypeID(each.constant), ObStringGetTypeID());
    EXPECT_TRUE(objects.insert(each.constant).second) << each.text;
  }
}

}  // namespace
