#include "linux/multipath_status.hpp"

#include "linux/word_reader.hpp"

namespace tavrenix::sys {

namespace {

std::optional<StatusPath> readPath(WordReader& reader, std::size_t words) {
  const DeviceNumber device = reader.device();
  const std::string_view state = reader.word();
  reader.number();  // how often it failed
  reader.skip(words);
  if (state != "A" && state != "F") return std::nullopt;
  return StatusPath{device, state == "A"};
}

std::optional<StatusGroup> readGroup(WordReader& reader) {
  const std::string_view state = reader.word();
  if (state != "A" && state != "D" && state != "E") return std::nullopt;
  StatusGroup group{state.front(), {}};
  reader.skip(reader.count());
  const std::size_t paths = reader.count();
  const std::size_t words = reader.count();
  for (std::size_t i = 0; i < paths && !reader.failed(); ++i) {
    const auto path = readPath(reader, words);
    if (!path) return std::nullopt;
    group.paths.push_back(*path);
  }
  return group;
}

}  // namespace

std::optional<bool> MultipathStatus::uses(DeviceNumber device) const {
  for (const auto& group : groups) {
    for (const auto& path : group.paths) {
      if (path.device == device) return path.used;
    }
  }
  return std::nullopt;
}

std::optional<MultipathStatus> parseMultipathStatus(std::string_view line) {
  WordReader reader(line);
  reader.skip(reader.count());  // queued ios and handler waits
  reader.skip(reader.count());  // of the handler
  MultipathStatus status;
  const std::size_t groups = reader.count();
  reader.number();  // the current group
  for (std::size_t i = 0; i < groups && !reader.failed(); ++i) {
    auto group = readGroup(reader);
    if (!group) return std::nullopt;
    status.groups.push_back(std::move(*group));
  }
  if (!reader.finished()) return std::nullopt;
  return status;
}

}  // namespace tavrenix::sys
