// The device identification page of SCSI, 0x83, described in SPC: which designators a logical unit
// has.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavrenix::sys {

enum class DesignatorType : std::uint8_t { kT10 = 1, kEui64 = 2, kNaa = 3, kScsiName = 8 };

struct Designator {
  DesignatorType type{};
  std::vector<std::uint8_t> bytes;
};

// The designator of the logical unit that names it best: NAA of format 6, 5, then 2 and others,
// EUI-64, SCSI name, T10 vendor. Nothing where the page is not whole up to there or has none of
// them.
std::optional<Designator> preferredDesignator(std::span<const std::uint8_t> page);

// The text by which maps of that unit are known: the type's digit, then the bytes as hexadecimal
// digits or as text with each run of blanks as one '_'.
std::string wwidOf(const Designator& designator);

}  // namespace tavrenix::sys
