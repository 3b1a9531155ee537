// Events of devices, as the kernel sends them (netlink group 1) and as udev sends them on once its
// rules have run (group 2).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrenix::sys {

struct Uevent {
  std::vector<std::pair<std::string, std::string>> properties;
  // Empty where the event has no such property.
  std::string_view value(std::string_view name) const;
};

// message: one datagram. Nothing where it is neither "ACTION@PATH" followed by properties nor
// udev's own form, or where a length in it leads outside.
std::optional<Uevent> parseUevent(std::string_view message);

// Whether logical units, paths, their tables or their media may have changed with it.
bool concernsStorage(const Uevent& event);

}  // namespace tavrenix::sys
