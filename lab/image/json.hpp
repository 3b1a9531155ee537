// Reads and prints JSON. A document keeps the order of its keys, so that a file still looks
// familiar to its author after a change.
//
// Thread safety: both functions are pure and may be called on any thread.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tavrenix::lab {

using Json = nlohmann::ordered_json;

// The deepest nesting that is allowed. The outermost object or array is level 1.
inline constexpr std::size_t kDeepestNesting = 64;

// Returns the document in the text. Also refuses what the grammar of JSON allows: a repeated key,
// an integer outside [-2^63, 2^64-1], and a nesting deeper than kDeepestNesting.
// Errors: throws ImageError, which names the line and the fault.
Json readJSON(std::string_view text);

// Returns the document as text for a person, with a newline at its end. A value that fits into 100
// columns takes one line; any other has a line for each element. readJSON reads the same document
// from it.
std::string printJSON(const Json& document);

}  // namespace tavrenix::lab
