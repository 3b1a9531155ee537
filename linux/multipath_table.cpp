#include "linux/multipath_table.hpp"

#include "linux/selectors.hpp"
#include "linux/word_reader.hpp"

namespace tavrenix::sys {

namespace {

TableGroup readGroup(WordReader& reader) {
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

void append(std::string& line, std::string_view word) {
  if (!line.empty()) line += ' ';
  line += word;
}

void append(std::string& line, std::size_t count) {
  append(line, std::to_string(count));
}

void appendCounted(std::string& line, const std::vector<std::string>& words) {
  append(line, words.size());
  for (const auto& word : words) append(line, word);
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
    table.groups.push_back(readGroup(reader));
  }
  if (!reader.finished() || table.initialGroup > groups) return std::nullopt;
  return table;
}

std::string formatMultipathTable(const MultipathTable& table) {
  std::string line;
  appendCounted(line, table.features);
  appendCounted(line, table.handler);
  append(line, table.groups.size());
  append(line, std::to_string(table.initialGroup));
  for (const auto& group : table.groups) {
    append(line, group.selector);
    appendCounted(line, group.selectorArguments);
    append(line, group.paths.size());
    append(line, group.paths.empty() ? std::size_t{0} : group.paths.front().arguments.size());
    for (const auto& path : group.paths) {
      append(line, path.device.text());
      for (const auto& argument : path.arguments) append(line, argument);
    }
  }
  return line;
}

std::uint64_t repeatCount(const MultipathTable& table) {
  for (const auto& group : table.groups) {
    if (selectorNamed(group.selector) == nullptr) continue;
    for (const auto& path : group.paths) {
      if (path.arguments.empty()) continue;
      if (const auto count = parseNumber(path.arguments.front())) return *count;
    }
  }
  return 0;
}

std::string commonSelector(const MultipathTable& table) {
  for (const auto& group : table.groups) {
    if (group.selector != table.groups.front().selector) return {};
  }
  return table.groups.empty() ? std::string() : table.groups.front().selector;
}

}  // namespace tavrenix::sys
