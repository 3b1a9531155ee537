#include "linux/text/messages.hpp"

#include <cstdint>
#include <cstring>

#include "linux/text/words.hpp"

namespace tavrenix::sys {

namespace {

// The head of udevd's form: struct monitor_netlink_header in systemd's device-monitor.c. The magic
// is in network byte order, the numbers after it are in the machine's.
struct UdevHeader {
  char prefix[8];  // "libudev" and a zero byte
  unsigned char magic[4];
  std::uint32_t headerSize;
  std::uint32_t propertiesOffset;
  std::uint32_t propertiesLength;
};
constexpr std::string_view kUdevPrefix{"libudev\0", 8};
constexpr std::string_view kUdevMagic{"\xfe\xed\xca\xfe", 4};

std::optional<std::string_view> propertiesOfUdev(std::string_view message) {
  UdevHeader header;
  if (message.size() < sizeof header) return std::nullopt;
  std::memcpy(&header, message.data(), sizeof header);
  const std::string_view magic = message.substr(offsetof(UdevHeader, magic), kUdevMagic.size());
  if (magic != kUdevMagic || header.propertiesOffset < sizeof header ||
      header.propertiesOffset > message.size() ||
      header.propertiesLength > message.size() - header.propertiesOffset) {
    return std::nullopt;
  }
  return message.substr(header.propertiesOffset, header.propertiesLength);
}

std::optional<std::string_view> propertiesOfKernel(std::string_view message) {
  const std::size_t end = message.find('\0');
  if (end == std::string_view::npos) return std::nullopt;
  const std::size_t at = message.find('@');
  if (at == 0 || at >= end) return std::nullopt;
  return message.substr(end + 1);
}

}  // namespace

std::string_view Uevent::value(std::string_view name) const {
  for (std::string_view rest = properties; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\0'));
    rest.remove_prefix(line.size() + 1);
    if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) {
      return line.substr(name.size() + 1);
    }
  }
  return {};
}

std::optional<Uevent> parseUevent(std::string_view message) {
  const auto properties =
      message.starts_with(kUdevPrefix) ? propertiesOfUdev(message) : propertiesOfKernel(message);
  const bool whole = properties && (properties->empty() || properties->back() == '\0');
  return whole ? std::optional(Uevent{*properties}) : std::nullopt;
}

bool concernsStorage(const Uevent& event) {
  const std::string_view subsystem = event.value("SUBSYSTEM");
  return subsystem == "block" || subsystem == "scsi";
}

DaemonReply parseDaemonReply(std::string_view text) {
  text = trim(text);
  if (text == "ok") return DaemonReply::kDone;
  if (text == "timeout") return DaemonReply::kTooLate;
  const std::string_view first = text.substr(0, text.find('\n'));
  return trim(first) == "fail" ? DaemonReply::kRefused : DaemonReply::kUnknown;
}

std::optional<std::string> frameDaemonCommand(std::string_view command) {
  constexpr std::size_t kLongestCommand = 512;
  const std::size_t length = command.size() + 1;
  if (length > kLongestCommand) return std::nullopt;
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  frame += command;
  frame += '\0';
  return frame;
}

}  // namespace tavrenix::sys
