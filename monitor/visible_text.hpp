// Text from devices and configuration as it may be shown: nothing in it acts on a terminal, hides
// other text or changes its direction.
#pragma once

#include <string>
#include <string_view>

namespace tavrenix::monitor {

// Returns text with a backslash escape for each control character, each character that is invisible
// or turns the direction of text, each byte that is not UTF-8, and the backslash itself. The result
// can be told from any other text's. asciiOnly: escapes all that is not ASCII.
std::string visible(std::string_view text, bool asciiOnly = false);

// Terminal columns that visible text fills: wide characters fill two.
std::size_t columnsOf(std::string_view text);

// text filled up with blanks to that many columns, or cut there with an ellipsis of one dot.
std::string fitted(std::string_view text, std::size_t columns);

// text in lines of at most width columns, broken at blanks; all lines but the first begin with
// indent blanks. A word that is longer stands on a line of its own. Each line ends with a newline.
// width 0: one line.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace tavrenix::monitor
