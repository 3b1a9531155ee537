#include "linux/text/identity.hpp"

#include "runtime/byte_text.hpp"

namespace tavrenix::sys {

namespace {

// The library's identifiers have at most so many bytes.
constexpr std::size_t kMostBytes = 127;
constexpr std::size_t kHashBytes = 8;

// FNV-1a, which gives the same number in every run and on every machine.
std::uint64_t hashOf(const std::vector<std::uint8_t>& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return hash;
}

// Cuts the designator to the length of an identifier, and puts a hash of all of it at the end.
void shorten(std::vector<std::uint8_t>& bytes) {
  if (bytes.size() <= kMostBytes) return;
  const std::uint64_t hash = hashOf(bytes);
  bytes.resize(kMostBytes - kHashBytes);
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(hash >> shift));
  }
}

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

// Pads the fields to fixed widths if `aligned`.
std::string addressDigits(const ScsiAddress& address, bool aligned) {
  const auto field = [aligned](std::uint64_t number, std::size_t digits) {
    return padded(number, aligned ? digits : 1);
  };
  return field(address.host, 3) + 'F' + field(address.channel, 2) + 'F' + field(address.target, 4) +
         'F' + field(address.lun, 4);
}

// Returns the last value of that name, as udev itself reads its records.
std::string_view property(std::string_view record, std::string_view name) {
  std::string_view value;
  while (!record.empty()) {
    const std::size_t end = record.find('\n');
    std::string_view line = record.substr(0, end);
    record.remove_prefix(end == std::string_view::npos ? record.size() : end + 1);
    if (!line.starts_with("E:")) continue;
    line.remove_prefix(2);
    if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) {
      value = line.substr(name.size() + 1);
    }
  }
  return value;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> designatorOf(std::string_view uuid) {
  if (!isMultipathUuid(uuid)) return std::nullopt;
  const std::string_view wwid = uuid.substr(kMultipathUuidPrefix.size());
  const char type = wwid.front();
  std::optional<std::vector<std::uint8_t>> bytes;
  if (type == '3' || type == '2') bytes = ob::bytesFromHexadecimal(wwid.substr(1));
  if (!bytes || bytes->empty()) {
    const bool named = (type == '8' || type == '1') && wwid.size() > 1;
    const std::string_view text = named ? wwid.substr(1) : wwid;
    bytes.emplace(text.begin(), text.end());
  }
  shorten(*bytes);
  return bytes;
}

std::optional<Place> parsePlace(std::string_view link) {
  constexpr std::string_view kUpToSysfs = "../..";
  if (!link.starts_with(kUpToSysfs)) return std::nullopt;
  link.remove_prefix(kUpToSysfs.size());
  if (link.find("..") != std::string_view::npos) return std::nullopt;
  Place place;
  place.device = "/sys" + std::string(link.substr(0, link.rfind('/')));
  // A partition lies in the folder of its disk: .../block/sda/sda1.
  const std::size_t disk = place.device.rfind('/');
  place.partition = place.device.substr(0, disk).ends_with("/block");
  if (place.partition) place.device.resize(disk);
  // This folder lies between a SCSI device and its disk.
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

std::vector<std::uint8_t> pathIdentifier(const Place& place, DeviceNumber device) {
  constexpr std::size_t kMostDigits = 30;
  std::string digits;
  if (place.address && !place.partition) digits = addressDigits(*place.address, true);
  if (digits.size() > kMostDigits) digits = addressDigits(*place.address, false);
  if (digits.empty() || digits.size() > kMostDigits) {
    digits = 'E' + padded(device.major, 4) + 'F' + padded(device.minor, 4);
  }
  if (digits.size() % 2 != 0) digits.insert(digits.begin(), '0');
  return *ob::bytesFromHexadecimal(digits);
}

std::optional<Identity> parseInquiry(std::string_view data) {
  if (data.size() < 32) return std::nullopt;
  return Identity{ob::printable(trim(data.substr(8, 8))), ob::printable(trim(data.substr(16, 16))),
                  static_cast<std::uint8_t>(static_cast<unsigned char>(data[0]) & 0x1F)};
}

std::optional<std::string> fileSystemLabel(std::string_view record) {
  // A member of a RAID or of a volume group also has a label, but that is no label of a volume.
  if (property(record, "ID_FS_USAGE") != "filesystem") return std::nullopt;
  std::string label = decodeHexEscapes(property(record, "ID_FS_LABEL_ENC"));
  if (label.empty()) label = property(record, "ID_FS_LABEL");
  label = ob::printable(trim(label));
  if (label.empty()) return std::nullopt;
  return label;
}

}  // namespace tavrenix::sys
