// Warnings about an image: parts that are valid but have no effect, such as a misspelt property.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/image/image.hpp"

namespace tavrenix::lab {

inline constexpr std::size_t kMostWarnings = 20;

// Returns one line for each warning: the place, and what has no effect there. After kMostWarnings
// lines, a last one says how many more there are. `text` is the text that the image was read from.
std::vector<std::string> warningsAbout(const Image& image, std::string_view text);

}  // namespace tavrenix::lab
