#include "linux/host_port.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

// "0x" and the digits of eight bytes, as transport classes write world wide names.
std::vector<std::uint8_t> bytesOfWorldWideName(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  const auto number = parseNumber(text, 16);
  if (!number || *number == 0 || *number == UINT64_MAX) return {};  // both mean that it has none
  std::vector<std::uint8_t> bytes;
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(*number >> shift));
  }
  return bytes;
}

std::vector<std::uint8_t> bytesOfText(std::string_view text) {
  constexpr std::size_t kLongestISCSIName = 223;  // RFC 3720
  if (text == "(null)") return {};                // what the kernel prints where nobody has set it
  text = text.substr(0, kLongestISCSIName);
  return {text.begin(), text.end()};
}

// Where a transport keeps the name of a host's port. The first that is there counts.
struct NameSource {
  const char* classFolder;
  const char* attribute;
  std::vector<std::uint8_t> (*bytes)(std::string_view);
};
constexpr NameSource kNameSources[] = {
    {"fc_host", "port_name", bytesOfWorldWideName},
    {"scsi_host", "host_sas_address", bytesOfWorldWideName},
    {"iscsi_host", "initiatorname", bytesOfText},
    {"iscsi_host", "hwaddress", bytesOfText},
};

}  // namespace

std::string interconnectOf(const HostFiles& files, std::uint32_t host, Transport transport) {
  switch (transport) {
    case Transport::kFibreChannel:
      return "Fibre Channel Interface";
    case Transport::kSas:
      return "SAS";
    case Transport::kIscsi:
      return "iSCSI";
    case Transport::kUnknown:
      break;
  }
  const auto driver = files.read("/sys/class/scsi_host/host" + std::to_string(host) + "/proc_name");
  const std::string name = printable(trim(driver.value_or("")));
  return name == "ib_srp" ? "SRP" : name;
}

std::vector<std::uint8_t> portIdentifierOf(const HostFiles& files, std::uint32_t host) {
  for (const auto& source : kNameSources) {
    const auto text = files.read(std::string("/sys/class/") + source.classFolder + "/host" +
                                 std::to_string(host) + '/' + source.attribute);
    auto bytes = text ? source.bytes(trim(*text)) : std::vector<std::uint8_t>{};
    if (!bytes.empty()) return bytes;
  }
  return {};
}

}  // namespace tavrenix::sys
