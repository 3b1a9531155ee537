// Identifier text: the bytes of a registry data property as two upper-case hexadecimal digits each.
#pragma once

#include "runtime/collections.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// The most bytes that an identifier may have: its text stands in a buffer of 256 characters.
inline constexpr std::size_t kMaximumIdentifierBytes = 127;

// The text, without separator, prefix or suffix. An identifier that is too long ends the process:
// cut off, it could name another device.
ob::Ref<const ob::String> identifierText(const ob::Data& identifier);

// The identifier text of the data under key. None where properties is none or has no data there.
ob::Ref<const ob::String> identifierFromProperties(const ob::Dictionary* properties,
                                                   const ob::String& key);

}  // namespace tavrenix
