// How values of the registry become the public values that clients see: identifiers as text, and
// the algorithms of the driver.
#pragma once

#include <cstdint>

#include "runtime/collections.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// The most bytes that an identifier may have. A longer one ends the process: if it were cut, it
// could name another device.
inline constexpr std::size_t kMaximumIdentifierBytes = 127;

// Returns the bytes as two upper-case hexadecimal digits each. REQUIRES: at most
// kMaximumIdentifierBytes.
ob::Ref<const ob::String> identifierText(const ob::Data& identifier);
// Returns identifierText of the data under `key`, or null if there are no properties or no data.
ob::Ref<const ob::String> identifierFromProperties(const ob::Dictionary* properties,
                                                   const ob::String& key);

// The bits of an algorithm code. If a code has several, the lowest counts.
enum MPIOAlgorithm : std::uint32_t {
  kMPIOAlgorithmLeastBytes = 4,
  kMPIOAlgorithmLeastQueueDepth = 8,
  kMPIOAlgorithmRoundRobin = 16,
};

struct Algorithm {
  std::uint32_t code;
  const ob::String& registryName;
  const ob::String& publicValue;
};

// These functions return null if there is no such algorithm.
const Algorithm* algorithmOfRegistryName(const ob::String& name) noexcept;
const Algorithm* algorithmOfPublicValue(const ob::String& value) noexcept;
const Algorithm* algorithmOfCode(std::uint32_t code) noexcept;
// Returns the algorithm of the lowest known bit of `code`.
const Algorithm* algorithmOfLowestBit(std::uint32_t code) noexcept;

}  // namespace tavrenix
