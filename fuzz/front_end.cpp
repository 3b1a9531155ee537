#include "fuzz/front_end.hpp"

#include <algorithm>
#include <array>

#include "cli/columns.hpp"
#include "cli/main.hpp"
#include "cli/state.hpp"
#include "fuzz/captured.hpp"
#include "fuzz/promise.hpp"

namespace tavrenix::fuzz {

namespace {

std::size_t widthOf(std::span<const cli::Column> columns, std::size_t cli::Column::*gap) {
  std::size_t width = 0;
  for (const auto& column : columns) width += column.*gap + column.width;
  return width;
}

bool isPrintable(char c) {
  return c >= ' ' && c <= '~';
}

}  // namespace

Ran runFrontEnd(std::vector<std::string> words) {
  words.insert(words.begin(), "tavrenix");
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  cli::gRowNumber = 1;
  Captured output(stdout);
  Captured diagnostics(stderr);
  const int status = tavrenixMain(static_cast<int>(words.size()), argv.data(), [] { return 0U; });
  return {status, output.text(), diagnostics.text()};
}

void expectReport(const std::string& output) {
  using cli::Column;
  constexpr std::size_t kNumber = 3;  // of a row; no report here has a thousand
  constexpr std::string_view kVolumes = "    Volumes:";
  const std::array<std::size_t, 7> widths = {0,
                                             kVolumes.size(),
                                             kNumber + widthOf(cli::unitColumns, &Column::gap),
                                             widthOf(cli::pathColumns, &Column::gap),
                                             widthOf(cli::pathColumns, &Column::headerGap),
                                             widthOf(cli::volumeColumns, &Column::gap),
                                             widthOf(cli::volumeColumns, &Column::headerGap)};
  expect(output.empty() || output.back() == '\n', "a report ends with a line's end");
  for (std::string_view rest = output; !rest.empty();) {
    const std::string_view line = takeUpTo('\n', rest);
    expect(std::all_of(line.begin(), line.end(), isPrintable), "a report is printable ASCII");
    expect(std::find(widths.begin(), widths.end(), line.size()) != widths.end(),
           "a line of a report is as wide as its columns");
  }
}

}  // namespace tavrenix::fuzz
