#include "lab/fault.hpp"

#include <algorithm>

#include "runtime/string.hpp"

namespace tavrenix::lab {

namespace {

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$';
}

// The bytes of the well-formed character at the start of text; 0 where there is none.
std::size_t characterLength(std::string_view text) {
  for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length) {
    if (ob::isUTF8(text.substr(0, length))) return length;
  }
  return 0;
}

// C0, DEL and C1: whatever a terminal could take as an order.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (first < 0x20 || first == 0x7F) return true;
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

void appendEscaped(std::string& out, std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 0xF]);
  }
}

}  // namespace

std::string printable(std::string_view text, std::size_t most) {
  std::string out;
  while (!text.empty()) {
    if (out.size() >= most) return out + "...";
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(1, length));
    if (length == 0 || isControl(character)) {
      appendEscaped(out, character);
    } else {
      out += character;
    }
    text.remove_prefix(character.size());
  }
  return out;
}

void Place::append(std::string& text) const {
  if (above_ != nullptr) above_->append(text);
  if (kind_ == Kind::index) text += '[' + std::to_string(index_) + ']';
  if (kind_ != Kind::key) return;
  if (!key_.empty() && std::all_of(key_.begin(), key_.end(), isPlain)) {
    if (!text.empty()) text += '.';
    text += printable(key_);
  } else {
    text += "[\"" + printable(key_) + "\"]";
  }
}

std::string Place::text() const {
  std::string text;
  append(text);
  return text.empty() ? "top level" : text;
}

void Place::refuse(std::string_view fault) const {
  throw ImageError(text() + ": " + std::string(fault));
}

}  // namespace tavrenix::lab
