// What a device says of itself: VPD page 0x83 and standard INQUIRY data, any bytes.
#include "linux/vpd83.hpp"

#include <algorithm>

#include "fuzz/promise.hpp"
#include "linux/inquiry.hpp"
#include "linux/text.hpp"
#include "linux/wwid.hpp"

using namespace tavrenix::sys;
using tavrenix::fuzz::expect;

namespace {

void expectDesignator(const Designator& designator, std::span<const std::uint8_t> page) {
  const auto& bytes = designator.bytes;
  expect(!bytes.empty() && bytes.size() <= UINT8_MAX, "a designator has a length");
  expect(std::search(page.begin(), page.end(), bytes.begin(), bytes.end()) != page.end(),
         "a designator stands in the page");
  const std::string wwid = wwidOf(designator);
  const auto again = designatorOf(std::string(kMultipathUuidPrefix) + wwid);
  expect(again && !again->empty() && again->size() <= 64, "a map's uuid names a designator");
  const bool binary =
      designator.type == DesignatorType::kNaa || designator.type == DesignatorType::kEui64;
  if (!binary) return;
  const auto compared = std::min<std::size_t>(bytes.size(), 64);
  expect(again->size() == compared && std::equal(again->begin(), again->end(), bytes.begin()),
         "a map's uuid names the designator that it was made of");
}

}  // namespace

void tavrenix::fuzz::run(std::string_view input) {
  const std::span page(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  if (const auto designator = preferredDesignator(page)) {
    expectDesignator(*designator, page);
    std::vector<std::uint8_t> bytes(page.begin(), page.end());
    bytes.push_back(0x83);
    const auto longer = preferredDesignator(bytes);
    expect(longer && longer->bytes == designator->bytes, "what stands behind the page is not read");
  }
  if (const auto identity = parseInquiry(input)) {
    expect(identity->vendor.size() <= 8 && identity->product.size() <= 16 && identity->type < 32,
           "an identity fits its fields");
    expect(printable(identity->vendor) == identity->vendor &&
               printable(identity->product) == identity->product,
           "an identity is printable");
  }
}
