// Values as text that any terminal can show.
#pragma once

#include <tavrenix/ob.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tavrenix::cli {

/// The string as printable ASCII: one '?' for each character that is none, and no more than 254
/// characters. Nothing where value is not a string.
std::optional<std::string> asciiText(ObTypeRef value);

/// A size in bytes for people: decimal units and the exact count, no more than 31 characters.
std::string formatVolumeSize(std::int64_t bytes);

}  // namespace tavrenix::cli
