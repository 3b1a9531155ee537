#include "linux/topology/ports.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>

#include "linux/text/words.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::sys {

namespace {

// Reads "0x" and the digits of eight bytes, as transport classes write world wide names.
std::vector<std::uint8_t> bytesOfWorldWideName(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  const auto number = parseNumber(text, 16);
  if (!number || *number == 0 || *number == UINT64_MAX) return {};  // both mean no name
  std::vector<std::uint8_t> bytes;
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(*number >> shift));
  }
  return bytes;
}

std::vector<std::uint8_t> bytesOfText(std::string_view text) {
  constexpr std::size_t kLongestISCSIName = 223;  // RFC 3720
  if (text == "(null)") return {};                // the kernel prints this if the name is not set
  text = text.substr(0, kLongestISCSIName);
  return {text.begin(), text.end()};
}

// Returns the initiator's name of the host's first iSCSI session. Software iSCSI has no name for
// the host itself.
FileText nameOfSession(const HostFiles& files, const std::string& host) {
  const std::string device = "/sys/class/scsi_host/" + host + "/device/";
  auto entries = files.entries(device).value_or(std::vector<HostFiles::Entry>());
  std::erase_if(entries, [](const auto& entry) { return !entry.name.starts_with("session"); });
  const auto first = std::min_element(entries.begin(), entries.end(),
                                      [](auto& a, auto& b) { return a.name < b.name; });
  if (first == entries.end()) return {ENOENT, {}};
  return files.read(device + first->name + "/iscsi_session/" + first->name + "/initiatorname");
}

constexpr std::string_view kISCSIHost = "iscsi_host";

// A file in which a transport class keeps the name of a host's port.
struct NameSource {
  const char* classFolder;
  const char* attribute;  // of the host's session if null
  std::vector<std::uint8_t> (*bytes)(std::string_view);
};
// Of several, the first one that holds a name counts.
constexpr NameSource kNameSources[] = {
    {"fc_host", "port_name", bytesOfWorldWideName},
    {"scsi_host", "host_sas_address", bytesOfWorldWideName},
    {"iscsi_host", "initiatorname", bytesOfText},
    {"iscsi_session", nullptr, bytesOfText},
    {"iscsi_host", "hwaddress", bytesOfText},
};

// Returns the last folder in the path with a name that begins with `prefix`, or an empty text. The
// last one is right because a disk behind a SAS expander lies below its own end device.
std::string folderNamed(const std::string& path, std::string_view prefix) {
  const std::size_t slash = path.rfind('/' + std::string(prefix));
  if (slash == std::string::npos) return {};
  const std::string name = path.substr(slash + 1, path.find('/', slash + 1) - slash - 1);
  return isDeviceName(name) ? name : std::string();
}

std::string attribute(const HostFiles& files, const std::string& path) {
  return std::string(trim(files.read(path).text));
}

std::string iscsiPort(const HostFiles& files, const std::string& session) {
  const std::string folder = "/sys/class/iscsi_session/" + session + '/';
  const std::string name = attribute(files, folder + "targetname");
  const auto group = parseNumber(attribute(files, folder + "tpgt"));
  if (name.empty() || name == "(null)" || !group) return name == "(null)" ? "" : name;
  char suffix[16];
  std::snprintf(suffix, sizeof suffix, ",t,0x%04x", static_cast<unsigned>(*group & 0xFFFF));
  return name + suffix;
}

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
  const std::string name = ob::printable(trim(driver.text));
  return name == "ib_srp" ? "SRP" : name;
}

std::vector<std::uint8_t> portIdentifierOf(const HostFiles& files, std::uint32_t host) {
  const std::string name = "host" + std::to_string(host);
  for (const auto& source : kNameSources) {
    // What follows is of iSCSI, and five calls for every other host.
    if (source.classFolder == kISCSIHost && !files.exists("/sys/class/iscsi_host/" + name)) break;
    const auto text = source.attribute == nullptr
                          ? nameOfSession(files, name)
                          : files.read(std::string("/sys/class/") + source.classFolder + '/' +
                                       name + '/' + source.attribute);
    auto bytes = text ? source.bytes(trim(text.text)) : std::vector<std::uint8_t>{};
    if (!bytes.empty()) return bytes;
  }
  return {};
}

std::string targetPortOf(const HostFiles& files, const std::string& folder) {
  if (const auto remote = folderNamed(folder, "rport-"); !remote.empty()) {
    return textOfPort(bytesOfWorldWideName(
        attribute(files, "/sys/class/fc_remote_ports/" + remote + "/port_name")));
  }
  if (const auto end = folderNamed(folder, "end_device-"); !end.empty()) {
    return textOfPort(
        bytesOfWorldWideName(attribute(files, "/sys/class/sas_device/" + end + "/sas_address")));
  }
  const auto session = folderNamed(folder, "session");
  return session.empty() ? std::string() : iscsiPort(files, session);
}

std::string textOfPort(const std::vector<std::uint8_t>& bytes) {
  constexpr std::size_t kWorldWideNameBytes = 8;
  if (bytes.size() != kWorldWideNameBytes) return {bytes.begin(), bytes.end()};
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(byte));
    text += digits;
  }
  return text;
}

}  // namespace tavrenix::sys
