#include "linux/uevent.hpp"

#include <cstring>

namespace tavrenix::sys {

namespace {

// The head of udev's form: see struct monitor_netlink_header in systemd's device-monitor.c. The
// numbers behind the magic are in the machine's order, the magic in the network's.
struct UdevHeader {
  char prefix[8];  // "libudev" and a zero byte
  unsigned char magic[4];
  std::uint32_t headerSize;
  std::uint32_t propertiesOffset;
  std::uint32_t propertiesLength;
};
constexpr std::string_view kUdevPrefix{"libudev\0", 8};
constexpr std::string_view kUdevMagic{"\xfe\xed\xca\xfe", 4};

constexpr std::size_t kMostProperties = 1024;

// Strings that each end in a zero byte; those without '=' are passed over.
std::optional<Uevent> readProperties(std::string_view text) {
  Uevent event;
  while (!text.empty()) {
    const std::size_t end = text.find('\0');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    if (event.properties.size() == kMostProperties) return std::nullopt;
    event.properties.emplace_back(line.substr(0, equals), line.substr(equals + 1));
  }
  return event;
}

std::optional<Uevent> parseUdevMessage(std::string_view message) {
  UdevHeader header;
  if (message.size() < sizeof header) return std::nullopt;
  std::memcpy(&header, message.data(), sizeof header);
  const std::string_view magic = message.substr(offsetof(UdevHeader, magic), kUdevMagic.size());
  if (magic != kUdevMagic || header.propertiesOffset < sizeof header ||
      header.propertiesOffset > message.size() ||
      header.propertiesLength > message.size() - header.propertiesOffset) {
    return std::nullopt;
  }
  return readProperties(message.substr(header.propertiesOffset, header.propertiesLength));
}

}  // namespace

std::string_view Uevent::value(std::string_view name) const {
  for (const auto& [key, text] : properties) {
    if (key == name) return text;
  }
  return {};
}

std::optional<Uevent> parseUevent(std::string_view message) {
  if (message.starts_with(kUdevPrefix)) return parseUdevMessage(message);
  const std::size_t head = message.find('\0');
  if (head == std::string_view::npos) return std::nullopt;
  const std::size_t at = message.find('@');
  if (at == 0 || at >= head) return std::nullopt;
  return readProperties(message.substr(head + 1));
}

bool concernsStorage(const Uevent& event) {
  const std::string_view subsystem = event.value("SUBSYSTEM");
  return subsystem == "block" || subsystem == "scsi";
}

}  // namespace tavrenix::sys
