// Doubts about an image: parts that are valid but have no effect, such as a misspelt property.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/image/image.hpp"

namespace tavrenix::lab {

inline constexpr std::size_t kMostDoubts = 20;

// Returns one line for each doubt: the place, and what is doubtful there. After kMostDoubts lines,
// a last one says how many more there are. `text` is the text that the image was read from.
std::vector<std::string> doubtsAbout(const Image& image, std::string_view text);

}  // namespace tavrenix::lab
