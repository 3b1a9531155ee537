// Names that belong to the registry. The public keys are another vocabulary (keys.hpp), even where
// a text stands in both: "Logical Unit Alias" and "Logical Unit Path Identifier".
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

#define TAVRENIX_REGISTRY_NAME(name, text)                 \
  inline constinit ob::ConstantString name##Storage(text); \
  inline constexpr const ob::String& name = name##Storage.string

// On a logical unit.
TAVRENIX_REGISTRY_NAME(kUniqueIdentifier, "Logical Unit Unique Identifier");  // data
TAVRENIX_REGISTRY_NAME(kAlias, "Logical Unit Alias");                         // string
TAVRENIX_REGISTRY_NAME(kLoadBalancingAlgorithm, "Load Balancing Algorithm");  // string
TAVRENIX_REGISTRY_NAME(kPeripheralDeviceType, "Peripheral Device Type");      // number
TAVRENIX_REGISTRY_NAME(kBatchCount, "Batch Count");  // number; in requests too
// On a logical unit and on a path.
TAVRENIX_REGISTRY_NAME(kVendor, "Vendor Identification");    // string
TAVRENIX_REGISTRY_NAME(kProduct, "Product Identification");  // string
// The driver's request channel on a logical unit, and the keys inside.
TAVRENIX_REGISTRY_NAME(kProperties, "Properties");  // dictionary
TAVRENIX_REGISTRY_NAME(kAlgorithm, "Algorithm");    // string
TAVRENIX_REGISTRY_NAME(kPathState, "PathState");    // dictionary
// On a path, or above it.
TAVRENIX_REGISTRY_NAME(kPathIdentifier, "Logical Unit Path Identifier");           // data
TAVRENIX_REGISTRY_NAME(kProtocolCharacteristics, "Protocol Characteristics");      // dictionary
TAVRENIX_REGISTRY_NAME(kPhysicalInterconnect, "Physical Interconnect");            // string
TAVRENIX_REGISTRY_NAME(kControllerCharacteristics, "Controller Characteristics");  // dictionary
TAVRENIX_REGISTRY_NAME(kSCSIPortIdentifier, "Unique SCSI Port Identifier");        // data
// On a medium.
TAVRENIX_REGISTRY_NAME(kLeaf, "Leaf");        // boolean or number
TAVRENIX_REGISTRY_NAME(kContent, "Content");  // string

// Values of kLoadBalancingAlgorithm and kAlgorithm.
TAVRENIX_REGISTRY_NAME(kLeastBytes, "Least Bytes");
TAVRENIX_REGISTRY_NAME(kLeastQueueDepth, "Least Queue Depth");
TAVRENIX_REGISTRY_NAME(kModifiedRoundRobin, "Modified Round Robin");

// Values of kContent with a meaning.
inline constexpr std::string_view kSharedVolumeContent = "Zorva_Quil";
inline constexpr std::string_view kSharedVolumeComponentContent = "Zorva_Quil_Component";

#undef TAVRENIX_REGISTRY_NAME

// Values under a path's identifier inside kPathState.
inline constexpr std::int64_t kMPIOPathStateRequestEnable = 0;
inline constexpr std::int64_t kMPIOPathStateRequestDisable = 3;

}  // namespace tavrenix::registry
