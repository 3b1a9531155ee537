// JSON text to a document and back. Pure: no files here.
//
// The document keeps the order of keys, so that a file that is rewritten stays its author's.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tavrenix::lab {

using Json = nlohmann::ordered_json;

// Containers inside containers, the outermost counted.
inline constexpr std::size_t kDeepestNesting = 64;

// Stricter than the grammar: a key that stands twice, an integer outside [-2^63, 2^64-1] and deeper
// nesting are refused too. Throws ImageError, which names line and column of what is no JSON and
// the place in the document of what is refused.
Json readJSON(std::string_view text);

// Text for a person, ending in a newline: a value that fits into 100 columns stands on one line,
// any other is broken after each of its elements. readJSON gives the same document back.
std::string printJSON(const Json& document);

}  // namespace tavrenix::lab
