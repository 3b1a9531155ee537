// What udev remembers of a device: the lines of /run/udev/data/bMAJOR:MINOR.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::sys {

// The label of the file system on the device, printable, or nothing. The escaped form is preferred:
// it tells blanks from underscores, and some rules hand on that form alone.
std::optional<std::string> fileSystemLabel(std::string_view record);

}  // namespace tavrenix::sys
