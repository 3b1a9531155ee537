// The place of a value in an image's document, for messages about it.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavrenix::lab {

// An image that cannot be used. what() is one printable line: the place and what is wrong there.
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The place of one value, as in "line 37: entries[5].disk.mediaSize (id 112)".
//
// Ownership: a place borrows the place above it, its key and the document's text. Functions that
// walk down a document keep the chain on their stack.
class Place {
 public:
  // The place of the whole document. Without the document's text, places name no lines and IDs. The
  // text need not be valid JSON after the place.
  explicit Place(std::string_view document = {}) noexcept : document_(document) {}

  Place at(std::string_view key) const noexcept { return {this, Kind::kKey, key, 0}; }
  Place at(std::size_t index) const noexcept { return {this, Kind::kIndex, {}, index}; }

  // Returns the place in words: the line, the keys and indices from the top to the value, and the
  // ID of the entry that holds it, if any. Reads the document's text, so it takes time in
  // proportion to it.
  std::string text() const;
  // Throws ImageError with text() and the fault.
  [[noreturn]] void refuse(std::string_view fault) const;

 private:
  enum class Kind { kTop, kKey, kIndex };
  class Finder;
  Place(const Place* above, Kind kind, std::string_view key, std::size_t index) noexcept
      : above_(above), document_(above->document_), kind_(kind), key_(key), index_(index) {}

  bool isEntry() const noexcept;
  const Place* entry() const noexcept;
  void appendWay(std::string& text) const;
  Finder find() const;

  const Place* above_ = nullptr;
  std::string_view document_;
  Kind kind_ = Kind::kTop;
  std::string_view key_;
  std::size_t index_ = 0;
};

// Returns "line 3, column 7" for a byte of the text. Columns count characters.
std::string lineAndColumn(std::string_view text, std::size_t offset);

}  // namespace tavrenix::lab
