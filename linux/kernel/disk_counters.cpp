#include "linux/kernel/disk_counters.hpp"

namespace tavrenix::sys {

namespace {

std::uint64_t packedNumber(DeviceNumber device) {
  return (std::uint64_t{device.major} << 20) | device.minor;
}

}  // namespace

DiskCounters::DiskCounters(std::string text) : text_(std::move(text)) {
  const std::string_view all = text_;
  for (std::size_t begin = 0; begin < all.size();) {
    const std::size_t end = std::min(all.find('\n', begin), all.size());
    std::string_view rest = all.substr(begin, end - begin);
    const auto major = takeWord(rest);
    const auto minor = takeWord(rest);
    const auto device = deviceNumber(major, minor);
    takeWord(rest);  // its name
    if (device) lines_.set(packedNumber(*device), {end - rest.size(), rest.size()});
    begin = end + 1;
  }
}

std::optional<std::string> DiskCounters::take(DeviceNumber device) {
  const Line* line = lines_.find(packedNumber(device));
  if (line == nullptr) return std::nullopt;
  auto counters = text_.substr(line->begin, line->length);
  lines_.erase(packedNumber(device));
  return counters;
}

}  // namespace tavrenix::sys
