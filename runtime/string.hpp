// Immutable UTF-8 text. It may hold zero bytes, and a zero byte always follows it.
#pragma once

#include <string_view>

#include "runtime/object.hpp"

namespace ob {

class String final : public Object {
 public:
  static constexpr TypeID kType = kStringType;
  // Returns a string with a copy of the text, or none if the text is not UTF-8.
  static Ref<String> make(std::string_view text);
  // Returns a string with a copy of the text, which is not checked. REQUIRES: text is UTF-8.
  static Ref<String> makeUnchecked(std::string_view text);
  // For OB_CONSTANT_STRING: borrows the literal.
  constexpr explicit String(std::string_view literal) noexcept
      : Object(Immortal{}), chars_(literal.data()), size_(literal.size()) {}

  std::string_view view() const noexcept { return {chars_, size_}; }
  const char* utf8() const noexcept { return chars_; }

  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

  // An object and its text are one allocation, which plain delete frees.
  static void operator delete(void* memory) noexcept { ::operator delete(memory); }

 private:
  String(const char* chars, std::size_t size) noexcept : chars_(chars), size_(size) {}
  static void* operator new(std::size_t size, std::size_t extra) {
    return ::operator new(size + extra);
  }
  static void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }

  const char* chars_;
  std::size_t size_;
};

// Defines `name` as a constant of type const ob::String&, in a header or a source file. It exists
// before any code runs and is never destroyed. Two constants with the same text are two objects.
#define OB_CONSTANT_STRING(name, text)                           \
  inline constinit ob::Constant<ob::String> name##Storage{text}; \
  inline constexpr const ob::String& name = name##Storage.object

}  // namespace ob
