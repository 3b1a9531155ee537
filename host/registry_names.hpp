// Names in the device registry. The public keys (keys.hpp) are different objects, even if they have
// the same text: "Logical Unit Alias" and "Logical Unit Path Identifier" occur in both.
#pragma once

#include <string_view>

#include "runtime/string.hpp"

namespace tavrenix::registry {

inline constexpr std::string_view kServicePlane = "KsService";

inline constexpr std::string_view kServiceClass = "KsService";
inline constexpr std::string_view kLogicalUnitClass = "KsSCSIMultipathedLogicalUnit";
inline constexpr std::string_view kPathClass = "KsSCSIHierarchicalLogicalUnit";
inline constexpr std::string_view kMediaClass = "KsMedia";

// Kinds of notification.
inline constexpr std::string_view kFirstMatchNotification = "KsServiceFirstMatch";
inline constexpr std::string_view kTerminateNotification = "KsServiceTerminate";

// On a logical unit.
OB_CONSTANT_STRING(kUniqueIdentifier, "Logical Unit Unique Identifier");  // data
OB_CONSTANT_STRING(kAlias, "Logical Unit Alias");                         // string
OB_CONSTANT_STRING(kLoadBalancingAlgorithm, "Load Balancing Algorithm");  // string
OB_CONSTANT_STRING(kPeripheralDeviceType, "Peripheral Device Type");      // number
OB_CONSTANT_STRING(kBatchCount, "Batch Count");  // number; also in requests
// On a logical unit and on a path.
OB_CONSTANT_STRING(kVendor, "Vendor Identification");    // string
OB_CONSTANT_STRING(kProduct, "Product Identification");  // string
// The driver's request channel on a logical unit, and the keys inside.
OB_CONSTANT_STRING(kProperties, "Properties");  // dictionary
OB_CONSTANT_STRING(kAlgorithm, "Algorithm");    // string
OB_CONSTANT_STRING(kPathState, "PathState");    // dictionary
// On a path, or above it.
OB_CONSTANT_STRING(kPathIdentifier, "Logical Unit Path Identifier");           // data
OB_CONSTANT_STRING(kProtocolCharacteristics, "Protocol Characteristics");      // dictionary
OB_CONSTANT_STRING(kPhysicalInterconnect, "Physical Interconnect");            // string
OB_CONSTANT_STRING(kControllerCharacteristics, "Controller Characteristics");  // dictionary
OB_CONSTANT_STRING(kSCSIPortIdentifier, "Unique SCSI Port Identifier");        // data
// On a medium.
OB_CONSTANT_STRING(kLeaf, "Leaf");        // boolean or number
OB_CONSTANT_STRING(kContent, "Content");  // string

// Values of kLoadBalancingAlgorithm and kAlgorithm.
OB_CONSTANT_STRING(kLeastBytes, "Least Bytes");
OB_CONSTANT_STRING(kLeastQueueDepth, "Least Queue Depth");
OB_CONSTANT_STRING(kModifiedRoundRobin, "Modified Round Robin");

// The values of kContent that the library interprets.
inline constexpr std::string_view kSharedVolumeContent = "Zorva_Quil";
inline constexpr std::string_view kSharedVolumeComponentContent = "Zorva_Quil_Component";

// The values in a kPathState dictionary, whose keys are the identifiers of paths.
inline constexpr std::int64_t kMPIOPathStateRequestEnable = 0;
inline constexpr std::int64_t kMPIOPathStateRequestDisable = 3;

}  // namespace tavrenix::registry
