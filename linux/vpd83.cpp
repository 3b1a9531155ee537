#include "linux/vpd83.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

constexpr std::uint8_t kPage = 0x83;
constexpr std::size_t kHeader = 4;  // of the page and of each designator

// 0 where the designator is of no use here; otherwise higher is better.
int rank(const Designator& designator) {
  if (designator.bytes.empty()) return 0;
  switch (designator.type) {
    case DesignatorType::kNaa: {
      const int format = designator.bytes.front() >> 4;
      return format == 6 ? 9 : format == 5 ? 8 : format == 2 ? 7 : 6;
    }
    case DesignatorType::kEui64:
      return 5;
    case DesignatorType::kScsiName:
      return 4;
    case DesignatorType::kT10:
      return 3;
  }
  return 0;
}

std::string collapsed(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\0';
    if (!blank) result += c;
    if (blank && !result.ends_with('_')) result += '_';
  }
  return result;
}

}  // namespace

std::optional<Designator> preferredDesignator(std::span<const std::uint8_t> page) {
  if (page.size() < kHeader || page[1] != kPage) return std::nullopt;
  const std::size_t told = static_cast<std::size_t>(page[2] << 8) + page[3];
  if (told > page.size() - kHeader) return std::nullopt;
  page = page.subspan(kHeader, told);

  Designator best;
  while (page.size() >= kHeader) {
    const std::size_t length = page[3];
    if (length > page.size() - kHeader) break;
    const bool ofLogicalUnit = (page[1] & 0x30) == 0;
    const auto bytes = page.subspan(kHeader, length);
    const Designator one{static_cast<DesignatorType>(page[1] & 0x0F), {bytes.begin(), bytes.end()}};
    if (ofLogicalUnit && rank(one) > rank(best)) best = one;
    page = page.subspan(kHeader + length);
  }
  if (rank(best) == 0) return std::nullopt;
  return best;
}

std::string wwidOf(const Designator& designator) {
  std::string wwid = std::to_string(static_cast<int>(designator.type));
  if (designator.type == DesignatorType::kNaa || designator.type == DesignatorType::kEui64) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const std::uint8_t byte : designator.bytes) {
      wwid += kDigits[byte >> 4];
      wwid += kDigits[byte & 0xF];
    }
    return wwid;
  }
  const std::string text(designator.bytes.begin(), designator.bytes.end());
  return wwid + collapsed(trim(text));
}

}  // namespace tavrenix::sys
