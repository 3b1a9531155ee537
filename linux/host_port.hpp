// A SCSI host: how it is reached, and what its port is called.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "linux/files.hpp"
#include "linux/place.hpp"

namespace tavrenix::sys {

// Text for people: "Fibre Channel Interface", "SAS", "iSCSI", "SRP", or the name of the host's
// driver where it belongs to no transport that is known here.
std::string interconnectOf(const HostFiles& files, std::uint32_t host, Transport transport);

// The port's world wide name, SAS address or iSCSI name. Empty where the host has none.
std::vector<std::uint8_t> portIdentifierOf(const HostFiles& files, std::uint32_t host);

}  // namespace tavrenix::sys
