// The two ends of a path: the port of the machine's SCSI host, and the port of the array.
//
// Thread safety: all functions only read files and may be called on any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "linux/kernel/files.hpp"
#include "linux/text/identity.hpp"

namespace tavrenix::sys {

// Returns the transport of the host in words: "Fibre Channel Interface", "SAS", "iSCSI" or "SRP".
// Returns the name of the host's driver if the transport is none of these.
std::string interconnectOf(const HostFiles& files, std::uint32_t host, Transport transport);

// Returns the port's world wide name, SAS address or iSCSI name; no bytes if the host has none.
std::vector<std::uint8_t> portIdentifierOf(const HostFiles& files, std::uint32_t host);

// Returns the array's port in the form of textOfPort, or the iSCSI name of the target with its
// portal group: "iqn...,t,0x0001". Returns an empty text if the disk's transport has none.
// `folder`: the real folder of the SCSI device in sysfs, without links.
std::string targetPortOf(const HostFiles& files, const std::string& folder);

// Returns a world wide name or SAS address in 16 hexadecimal digits, and an iSCSI name as it is.
std::string textOfPort(const std::vector<std::uint8_t>& bytes);

}  // namespace tavrenix::sys
