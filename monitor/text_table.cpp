#include "monitor/text_table.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

std::string table(const std::vector<Row>& rows, std::size_t indent, std::size_t width) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (std::size_t column = 0; column < widths.size(); ++column) {
    const bool isUsed = std::any_of(rows.begin() + 1, rows.end(),
                                    [&](const Row& row) { return !row[column].empty(); });
    if (!isUsed) continue;
    for (const Row& row : rows) widths[column] = std::max(widths[column], columnsOf(row[column]));
  }
  std::string result;
  for (const Row& row : rows) {
    std::string line(indent, ' ');
    for (std::size_t column = 0; column < widths.size(); ++column) {
      if (widths[column] != 0) line += fitted(row[column], widths[column]) + "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    if (width != 0 && columnsOf(line) > width) line = fitted(line, width);
    result += line + '\n';
  }
  return result;
}

std::string readableSize(std::uint64_t bytes) {
  constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; value >= 999.95 && unit + 1 < std::size(kUnits); ++unit) value /= 1000;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", value, kUnits[unit]);
  return text;
}

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

}  // namespace tavrenix::monitor
