#include "linux/text/multipath_lines.hpp"

namespace tavrenix::sys {

namespace {

TableGroup readTableGroup(WordReader& reader) {
  TableGroup group;
  group.selector = reader.word();
  group.selectorArguments = reader.words(reader.count());
  const std::size_t paths = reader.count();
  const std::size_t arguments = reader.count();
  for (std::size_t i = 0; i < paths && !reader.failed(); ++i) {
    const DeviceNumber device = reader.device();
    group.paths.push_back({device, reader.words(arguments)});
  }
  return group;
}

std::optional<StatusPath> readStatusPath(WordReader& reader, std::size_t words) {
  const DeviceNumber device = reader.device();
  const std::string_view state = reader.word();
  const std::uint64_t failures = reader.number();
  reader.skip(words);
  if (state != "A" && state != "F") return std::nullopt;
  return StatusPath{device, state == "A", failures};
}

std::optional<StatusGroup> readStatusGroup(WordReader& reader) {
  const std::string_view state = reader.word();
  if (state != "A" && state != "D" && state != "E") return std::nullopt;
  StatusGroup group{state.front(), {}};
  reader.skip(reader.count());
  const std::size_t paths = reader.count();
  const std::size_t words = reader.count();
  for (std::size_t i = 0; i < paths && !reader.failed(); ++i) {
    const auto path = readStatusPath(reader, words);
    if (!path) return std::nullopt;
    group.paths.push_back(*path);
  }
  return group;
}

void append(std::string& line, std::string_view word) {
  if (!line.empty()) line += ' ';
  line += word;
}

void append(std::string& line, std::uint64_t number) {
  append(line, std::string_view(std::to_string(number)));
}

void append(std::string& line, const std::vector<std::string>& words) {
  for (const auto& word : words) append(line, std::string_view(word));
}

void appendCounted(std::string& line, const std::vector<std::string>& words) {
  append(line, words.size());
  append(line, words);
}

}  // namespace

std::optional<MultipathTable> parseMultipathTable(std::string_view line) {
  WordReader reader(line);
  MultipathTable table;
  table.features = reader.words(reader.count());
  table.handler = reader.words(reader.count());
  const std::size_t groups = reader.count();
  table.initialGroup = reader.number();
  for (std::size_t i = 0; i < groups && !reader.failed(); ++i) {
    table.groups.push_back(readTableGroup(reader));
  }
  if (!reader.finished() || table.initialGroup > groups) return std::nullopt;
  return table;
}

std::string formatMultipathTable(const MultipathTable& table) {
  std::string line;
  appendCounted(line, table.features);
  appendCounted(line, table.handler);
  append(line, table.groups.size());
  append(line, table.initialGroup);
  for (const auto& group : table.groups) {
    append(line, std::string_view(group.selector));
    appendCounted(line, group.selectorArguments);
    append(line, group.paths.size());
    append(line, group.paths.empty() ? 0 : group.paths.front().arguments.size());
    for (const auto& path : group.paths) {
      append(line, std::string_view(path.device.text()));
      append(line, path.arguments);
    }
  }
  return line;
}

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
  reader.skip(reader.count());  // words of the handler
  MultipathStatus status;
  const std::size_t groups = reader.count();
  reader.number();  // the current group
  for (std::size_t i = 0; i < groups && !reader.failed(); ++i) {
    auto group = readStatusGroup(reader);
    if (!group) return std::nullopt;
    status.groups.push_back(std::move(*group));
  }
  if (!reader.finished()) return std::nullopt;
  return status;
}

}  // namespace tavrenix::sys
