#include "runtime/string.hpp"

#include <algorithm>

#include "runtime/byte_text.hpp"

namespace ob {

Ref<String> String::makeUnchecked(std::string_view text) {
  void* memory = String::operator new(sizeof(String), text.size() + 1);
  char* chars = static_cast<char*>(memory) + sizeof(String);
  std::copy(text.begin(), text.end(), chars);
  chars[text.size()] = '\0';
  return Ref<String>::adopt(::new (memory) String(chars, text.size()));
}

Ref<String> String::make(std::string_view text) {
  if (!isUTF8(text)) return nullptr;
  return makeUnchecked(text);
}

bool String::equals(const Object& other) const noexcept {
  return other.typeID() == kStringType && view() == static_cast<const String&>(other).view();
}

}  // namespace ob
