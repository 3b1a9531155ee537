#include <algorithm>

#include "lab/image/json.hpp"

namespace tavrenix::lab {

namespace {

constexpr std::size_t kColumns = 100;

// Returns the width of the text: its number of characters, not of bytes.
std::size_t columns(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// Calls each("\"key\": ", value) for the members of an object, or each("", value) for the elements
// of an array. Stops and returns false if a call returns false.
template <class Each>
bool everyElement(const Json& container, const Each& each) {
  if (container.is_array()) {
    return std::all_of(container.begin(), container.end(),
                       [&](const Json& value) { return each(std::string(), value); });
  }
  const auto& members = container.get_ref<const Json::object_t&>();
  return std::all_of(members.begin(), members.end(), [&](const auto& member) {
    return each(Json(member.first).dump() + ": ", member.second);
  });
}

// Appends the value to the line. Returns false if the line becomes wider than `most` columns. The
// line is then incomplete.
bool appendOneLine(const Json& value, std::string& line, std::size_t most) {
  if (!value.is_structured()) {
    line += value.dump();
    return columns(line) <= most;
  }
  line += value.is_array() ? '[' : '{';
  bool first = true;
  const bool fits = everyElement(value, [&](const std::string& key, const Json& element) {
    line += (std::exchange(first, false) ? "" : ", ") + key;
    return appendOneLine(element, line, most);
  });
  line += value.is_array() ? ']' : '}';
  return fits && columns(line) <= most;
}

// Appends the value to `out`. `used` columns of its first line are taken, and its last line is
// indented by `indent` blanks. Leaves one column free for a comma.
void print(const Json& value, std::size_t indent, std::size_t used, std::string& out) {
  std::string line;
  const std::size_t room = used + 1 < kColumns ? kColumns - used - 1 : 0;
  if (appendOneLine(value, line, room) || !value.is_structured() || value.empty()) {
    out += line;
    return;
  }
  out += value.is_array() ? '[' : '{';
  bool first = true;
  const std::size_t inside = indent + 2;
  everyElement(value, [&](const std::string& key, const Json& element) {
    out.append(std::exchange(first, false) ? "\n" : ",\n").append(inside, ' ').append(key);
    print(element, inside, inside + columns(key), out);
    return true;
  });
  out.append("\n").append(indent, ' ').append(value.is_array() ? "]" : "}");
}

}  // namespace

std::string printJSON(const Json& document) {
  std::string out;
  print(document, 0, 0, out);
  return out + '\n';
}

}  // namespace tavrenix::lab
