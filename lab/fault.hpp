// What is wrong with an image, and where: every refusal of this folder ends here.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavrenix::lab {

// One line for a person: the place, a colon, the fault.
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Text from a file as it may stand in a message: control characters and broken UTF-8 escaped, and
// cut after about `most` bytes.
std::string printable(std::string_view text, std::size_t most = 60);

// Where a value stands in the document, as in entries[3].properties.Leaf. A chain that lives on the
// stack of those who walk the document: it borrows what is above it and the key.
class Place {
 public:
  Place() noexcept = default;
  Place at(std::string_view key) const noexcept { return {this, key, 0, Kind::key}; }
  Place at(std::size_t index) const noexcept { return {this, {}, index, Kind::index}; }
  std::string text() const;
  [[noreturn]] void refuse(std::string_view fault) const;

 private:
  enum class Kind { top, key, index };
  Place(const Place* above, std::string_view key, std::size_t index, Kind kind) noexcept
      : above_(above), key_(key), index_(index), kind_(kind) {}
  void append(std::string& text) const;

  const Place* above_ = nullptr;
  std::string_view key_;
  std::size_t index_ = 0;
  Kind kind_ = Kind::top;
};

}  // namespace tavrenix::lab
