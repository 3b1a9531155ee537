#include "model/public_values.hpp"

#include <algorithm>
#include <array>

#include "host/registry_names.hpp"
#include "model/keys.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix {

namespace {

// In the order of their bits, on which algorithmOfLowestBit relies.
constexpr Algorithm kAlgorithms[] = {
    {kMPIOAlgorithmLeastBytes, registry::kLeastBytes, keys::kMPIOLogicalUnitAlgorithmLeastBytes},
    {kMPIOAlgorithmLeastQueueDepth, registry::kLeastQueueDepth,
     keys::kMPIOLogicalUnitAlgorithmLeastQueueDepth},
    {kMPIOAlgorithmRoundRobin, registry::kModifiedRoundRobin,
     keys::kMPIOLogicalUnitAlgorithmRoundRobin},
};

template <class Matches>
const Algorithm* findAlgorithm(Matches matches) noexcept {
  const auto* found = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms), matches);
  return found == std::end(kAlgorithms) ? nullptr : found;
}

}  // namespace

ob::Ref<const ob::String> identifierText(const ob::Data& identifier) {
  if (identifier.bytes().size() > kMaximumIdentifierBytes) {
    ob::fatal("a device identifier is longer than 127 bytes");
  }
  std::array<char, 2 * kMaximumIdentifierBytes> text;
  const char* end = ob::writeHexadecimal(identifier.bytes(), text.data());
  return ob::String::makeUnchecked({text.data(), end});
}

ob::Ref<const ob::String> identifierFromProperties(const ob::Dictionary* properties,
                                                   const ob::String& key) {
  const auto* identifier = properties == nullptr ? nullptr : properties->valueAs<ob::Data>(key);
  return identifier == nullptr ? nullptr : identifierText(*identifier);
}

const Algorithm* algorithmOfRegistryName(const ob::String& name) noexcept {
  return findAlgorithm([&](const Algorithm& one) { return one.registryName.equals(name); });
}

const Algorithm* algorithmOfPublicValue(const ob::String& value) noexcept {
  return findAlgorithm([&](const Algorithm& one) { return one.publicValue.equals(value); });
}

const Algorithm* algorithmOfCode(std::uint32_t code) noexcept {
  return findAlgorithm([&](const Algorithm& one) { return one.code == code; });
}

const Algorithm* algorithmOfLowestBit(std::uint32_t code) noexcept {
  return findAlgorithm([&](const Algorithm& one) { return (one.code & code) != 0; });
}

}  // namespace tavrenix
