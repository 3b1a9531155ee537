#include "linux/wwid.hpp"

#include <algorithm>

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

// Twice as many characters as bytes fit into the identifier column of a report, and more than any
// designator of SPC that storage arrays use.
constexpr std::size_t kMostBytes = 64;

std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view digits) {
  if (digits.empty() || digits.size() % 2 != 0) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  for (; !digits.empty(); digits.remove_prefix(2)) {
    const auto byte = parseNumber(digits.substr(0, 2), 16);
    if (!byte) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(*byte));
  }
  return bytes;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> designatorOf(std::string_view uuid) {
  if (!isMultipathUuid(uuid)) return std::nullopt;
  const std::string_view wwid = uuid.substr(kMultipathUuidPrefix.size());
  const char type = wwid.front();
  std::optional<std::vector<std::uint8_t>> bytes;
  if (type == '3' || type == '2') bytes = bytesOfHex(wwid.substr(1));
  if (!bytes) {
    const bool named = (type == '8' || type == '1') && wwid.size() > 1;
    const std::string_view text = named ? wwid.substr(1) : wwid;
    bytes.emplace(text.begin(), text.end());
  }
  bytes->resize(std::min(bytes->size(), kMostBytes));
  return bytes;
}

}  // namespace tavrenix::sys
