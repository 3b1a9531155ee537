#include "linux/udev_record.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

// The last value that the record has under name, as udev itself reads it.
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

std::optional<std::string> fileSystemLabel(std::string_view record) {
  std::string label = decodeUdevEscapes(property(record, "ID_FS_LABEL_ENC"));
  if (label.empty()) label = property(record, "ID_FS_LABEL");
  label = printable(trim(label));
  if (label.empty()) return std::nullopt;
  return label;
}

}  // namespace tavrenix::sys
