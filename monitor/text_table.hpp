// A table of visible text for a screen.
#pragma once

#include <string>
#include <vector>

namespace tavrenix::monitor {

using Row = std::vector<std::string>;

// Returns the rows as lines, each behind `indent` blanks: every column as wide as its widest text,
// two blanks between columns. A column without any text but its heading, in the first row, is left
// out. Lines are cut at width columns; 0 cuts nothing. Rows have as many texts as the first.
std::string table(const std::vector<Row>& rows, std::size_t indent, std::size_t width);

// "2.0 TB": bytes in the largest decimal unit of which there is at least one.
std::string readableSize(std::uint64_t bytes);

// "1 unit", "2 units"
std::string counted(std::size_t count, const std::string& what);

}  // namespace tavrenix::monitor
