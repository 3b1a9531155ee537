#include "linux/path_state.hpp"

#include "linux/text.hpp"
#include "model/tunable.hpp"

namespace tavrenix::sys {

namespace {

constexpr std::uint8_t kUnavailable = 3;

struct AccessState {
  std::string_view name;  // as the kernel's scsi_access_state_name writes it
  std::uint8_t code;      // as SPC numbers it
};
constexpr AccessState kAccessStates[] = {
    {"active/optimized", 0}, {"active/non-optimized", 1}, {"standby", 2},
    {"unavailable", 3},      {"lba-dependent", 4},        {"offline", 14},
    {"transitioning", 15},
};

std::uint8_t accessCode(std::string_view name) {
  for (const auto& state : kAccessStates) {
    if (state.name == name) return state.code;
  }
  return kUnavailable;  // "unknown", and what later kernels may say
}

// SCSI disks that take requests are "running"; others, of drivers that say it differently, "live".
bool isUsable(std::string_view deviceState) {
  return deviceState == "running" || deviceState == "live";
}

}  // namespace

std::uint8_t pathStateByte(std::optional<std::string_view> deviceState,
                           std::optional<std::string_view> accessState, std::optional<bool> used) {
  if (deviceState && !isUsable(trim(*deviceState))) return kUnavailable;
  const std::uint8_t access = accessState ? accessCode(trim(*accessState)) : std::uint8_t{0};
  const bool leftAlone = used && !*used;
  return static_cast<std::uint8_t>(access | (leftAlone ? kPathStateDisabledBit : 0));
}

}  // namespace tavrenix::sys
