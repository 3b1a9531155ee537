// Immutable UTF-8 text. Zero bytes inside are allowed; a zero byte always stands behind the text.
#pragma once

#include <string_view>

#include "runtime/object.hpp"

namespace ob {

class String final : public Object {
 public:
  static constexpr TypeID kType = kStringType;
  // A string of its own. None where the bytes are not UTF-8.
  static Ref<String> make(std::string_view text);
  // The same for text already known to be ASCII.
  static Ref<String> makeASCII(std::string_view text);
  // For constants; text must be a literal. See Constant.
  constexpr explicit String(std::string_view literal) noexcept
      : Object(Immortal{}), chars_(literal.data()), size_(literal.size()) {}

  std::string_view view() const noexcept { return {chars_, size_}; }
  const char* utf8() const noexcept { return chars_; }

  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

  // The text stands in the same allocation, behind the object.
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

// True where the bytes are well-formed UTF-8 (RFC 3629).
bool isUTF8(std::string_view bytes) noexcept;

// A string constant that exists before any code runs and is never destroyed.
union ConstantString {
  constexpr explicit ConstantString(std::string_view literal) noexcept : string(literal) {}
  ~ConstantString() {}
  String string;
};

}  // namespace ob
