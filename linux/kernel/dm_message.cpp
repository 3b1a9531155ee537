#include "linux/kernel/dm_message.hpp"

#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavrenix::sys {

namespace {

// The next two functions do what the kernel's huge_encode_dev() and huge_decode_dev() do.
std::uint64_t kernelNumber(DeviceNumber map) {
  return (map.minor & 0xFF) | (std::uint64_t{map.major} << 8) |
         (std::uint64_t{map.minor & ~0xFFU} << 12);
}

DeviceNumber deviceNumber(std::uint64_t kernelNumber) {
  return {static_cast<std::uint32_t>((kernelNumber >> 8) & 0xFFF),
          static_cast<std::uint32_t>((kernelNumber & 0xFF) | ((kernelNumber >> 12) & 0xFFF00))};
}

std::size_t aligned(std::size_t offset) {
  return (offset + 7) & ~std::size_t{7};
}

// Returns the text at the offset, up to its zero byte or the end of the bytes.
std::string_view textAt(std::string_view bytes, std::size_t offset) {
  if (offset >= bytes.size()) return {};
  bytes.remove_prefix(offset);
  return bytes.substr(0, bytes.find('\0'));
}

template <std::size_t N>
std::string_view textIn(const char (&field)[N]) {
  return textAt({field, N}, 0);
}

// Copies a value at the offset. Returns false if the bytes end before it does.
template <class T>
bool readAt(std::string_view bytes, std::size_t offset, T& value, std::size_t size = sizeof(T)) {
  if (offset > bytes.size() || bytes.size() - offset < size) return false;
  std::memcpy(&value, bytes.data() + offset, size);
  return true;
}

// Reads one entry of the list of maps. From control version 4.37 on, an event number and flags
// follow the name, aligned to 8 bytes. If a flag says so, the uuid follows them.
ListedMap listedMap(std::string_view bytes, std::size_t at, std::uint64_t device,
                    bool listsEvents) {
  const std::size_t nameAt = at + offsetof(dm_name_list, name);
  const std::string_view name = textAt(bytes, nameAt);
  ListedMap map{deviceNumber(device), decodeHexEscapes(name), {}, 0};
  const std::size_t behind = aligned(nameAt + name.size() + 1);
  std::uint32_t eventAndFlags[2];
  if (!listsEvents || !readAt(bytes, behind, eventAndFlags)) return map;
  map.event = eventAndFlags[0];
  if (eventAndFlags[1] == DM_NAME_LIST_FLAG_HAS_UUID) {
    map.uuid = decodeHexEscapes(textAt(bytes, aligned(behind + sizeof eventAndFlags)));
  }
  return map;
}

}  // namespace

DmMessage::DmMessage(std::optional<DeviceNumber> map, std::uint32_t flags)
    : words_(sizeof(dm_ioctl) / sizeof(std::uint64_t) + 1) {
  head().version[0] = DM_VERSION_MAJOR;
  head().data_start = sizeof(dm_ioctl);
  head().flags = flags;
  if (map) head().dev = kernelNumber(*map);
}

void DmMessage::add(const void* bytes, std::size_t count) {
  words_.resize((used_ + count) / sizeof(std::uint64_t) + 1);
  if (count != 0) std::memcpy(reinterpret_cast<char*>(words_.data()) + used_, bytes, count);
  used_ += count;
}

void DmMessage::addTarget(const Target& target) {
  dm_target_spec layout{};
  layout.sector_start = target.start;
  layout.length = target.length;
  target.type.copy(layout.target_type, sizeof layout.target_type - 1);
  layout.next = static_cast<std::uint32_t>(aligned(sizeof layout + target.line.size() + 1));
  head().target_count = 1;
  add(&layout, sizeof layout);
  add(target.line.c_str(), target.line.size() + 1);
}

void DmMessage::addText(const std::string& text) {
  const dm_target_msg message{};
  add(&message, offsetof(dm_target_msg, message));
  add(text.c_str(), text.size() + 1);
}

int DmMessage::ask(int control, unsigned long command, std::size_t room) {
  const auto question = words_;
  for (std::size_t bytes = std::max(room, aligned(used_)); bytes <= kMostBytes; bytes *= 4) {
    words_ = question;
    words_.resize(bytes / sizeof(std::uint64_t));
    head().data_size = static_cast<std::uint32_t>(bytes);
    if (::ioctl(control, command, words_.data()) != 0) return -errno;
    if ((head().flags & DM_BUFFER_FULL_FLAG) == 0) return 0;
  }
  return -EOVERFLOW;
}

std::string_view DmMessage::answer() const {
  const std::size_t end = std::min<std::size_t>(head().data_size, words_.size() * sizeof words_[0]);
  const std::size_t start = head().data_start;
  if (start < sizeof(dm_ioctl) || start > end) return {};
  return {reinterpret_cast<const char*>(words_.data()) + start, end - start};
}

std::vector<ListedMap> DmMessage::maps() const {
  const std::string_view bytes = answer();
  const bool listsEvents = head().version[1] >= 37;
  std::vector<ListedMap> found;
  dm_name_list entry{};
  for (std::size_t at = 0; readAt(bytes, at, entry, offsetof(dm_name_list, name));) {
    if (entry.dev == 0) break;  // the driver marks an empty list so
    found.push_back(listedMap(bytes, at, entry.dev, listsEvents));
    // 0 ends the list; less than an entry's length would lead into this entry again.
    if (entry.next < sizeof entry) break;
    at += entry.next;
  }
  return found;
}

MapLines DmMessage::lines() const {
  MapLines lines;
  lines.name = decodeHexEscapes(textIn(head().name));
  lines.uuid = decodeHexEscapes(textIn(head().uuid));
  lines.suspended = (head().flags & DM_SUSPEND_FLAG) != 0;
  lines.readOnly = (head().flags & DM_READONLY_FLAG) != 0;
  lines.inactiveTable = (head().flags & DM_INACTIVE_PRESENT_FLAG) != 0;
  lines.openCount = head().open_count;
  lines.event = head().event_nr;
  const std::string_view bytes = answer();
  dm_target_spec layout{};
  for (std::size_t at = 0, i = 0; i < head().target_count && readAt(bytes, at, layout); ++i) {
    lines.targets.push_back({layout.sector_start, layout.length,
                             std::string(textIn(layout.target_type)),
                             std::string(textAt(bytes, at + sizeof layout))});
    // The offset is counted from the first target. One that leads back, or into this target again,
    // ends the list.
    if (layout.next < at + sizeof layout) break;
    at = layout.next;
  }
  return lines;
}

}  // namespace tavrenix::sys
