// The state byte of a path, from what the kernel says of its disk and of the driver's use of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavrenix::sys {

// Bits 0 to 3 as in SPC, bit 7 set where the driver leaves a usable path alone.
//   deviceState  the disk's own state, such as "running"; a disk without one is usable
//   accessState  what its target port group says; nothing without a device handler: active
//   used         nothing where the driver cannot be asked
std::uint8_t pathStateByte(std::optional<std::string_view> deviceState,
                           std::optional<std::string_view> accessState, std::optional<bool> used);

}  // namespace tavrenix::sys
