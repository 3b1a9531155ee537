#include "linux/place.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

std::optional<ScsiAddress> parseAddress(std::string_view text) {
  std::uint64_t part[4] = {};
  for (int i = 0; i < 4; ++i) {
    const std::size_t colon = text.find(':');
    if ((colon == std::string_view::npos) != (i == 3)) return std::nullopt;
    const auto value = parseNumber(text.substr(0, colon));
    if (!value || (i < 3 && *value > UINT32_MAX)) return std::nullopt;
    part[i] = *value;
    text.remove_prefix(i == 3 ? text.size() : colon + 1);
  }
  return ScsiAddress{static_cast<std::uint32_t>(part[0]), static_cast<std::uint32_t>(part[1]),
                     static_cast<std::uint32_t>(part[2]), part[3]};
}

Transport transportOf(std::string_view folder) {
  if (folder.starts_with("rport-")) return Transport::kFibreChannel;
  if (folder.starts_with("end_device-")) return Transport::kSas;
  if (folder.starts_with("session")) return Transport::kIscsi;
  return Transport::kUnknown;
}

std::string padded(std::uint64_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

std::string addressDigits(const ScsiAddress& address, bool aligned) {
  const auto field = [aligned](std::uint64_t number, std::size_t digits) {
    return padded(number, aligned ? digits : 1);
  };
  return field(address.host, 3) + 'F' + field(address.channel, 2) + 'F' + field(address.target, 4) +
         'F' + field(address.lun, 4);
}

}  // namespace

std::optional<Place> parsePlace(std::string_view link) {
  constexpr std::string_view kUpToSysfs = "../..";
  if (!link.starts_with(kUpToSysfs)) return std::nullopt;
  link.remove_prefix(kUpToSysfs.size());
  if (link.find("..") != std::string_view::npos) return std::nullopt;
  Place place;
  place.device = "/sys" + std::string(link.substr(0, link.rfind('/')));
  // The kernel puts this one between a device and disks of another class.
  if (place.device.ends_with("/block")) place.device.resize(place.device.rfind('/'));
  while (!link.empty()) {
    const std::size_t slash = link.find('/');
    const std::string_view folder = link.substr(0, slash);
    link.remove_prefix(slash == std::string_view::npos ? link.size() : slash + 1);
    if (const auto address = parseAddress(folder)) place.address = address;
    if (const auto found = transportOf(folder); found != Transport::kUnknown) {
      place.transport = found;
    }
    place.name = folder;
  }
  if (!isDeviceName(place.name)) return std::nullopt;
  return place;
}

std::vector<std::uint8_t> pathIdentifier(const std::optional<ScsiAddress>& address,
                                         std::uint32_t major, std::uint32_t minor) {
  constexpr std::size_t kMostDigits = 30;
  std::string digits;
  if (address) digits = addressDigits(*address, true);
  if (digits.size() > kMostDigits) digits = addressDigits(*address, false);
  if (digits.empty() || digits.size() > kMostDigits) {
    digits = 'E' + padded(major, 4) + 'F' + padded(minor, 4);
  }
  if (digits.size() % 2 != 0) digits.insert(digits.begin(), '0');
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(
        static_cast<std::uint8_t>(*parseNumber(std::string_view(digits).substr(i, 2), 16)));
  }
  return bytes;
}

}  // namespace tavrenix::sys
