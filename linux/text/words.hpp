// Words, numbers and names in the texts of the kernel, of devices and of daemons.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrenix::sys {

// Returns the text without blanks, tabs, line ends and zero bytes at either end.
std::string_view trim(std::string_view text);
// Removes the next word between blanks from `rest` and returns it, empty if none is left.
std::string_view takeWord(std::string_view& rest);
// Returns the number that the whole text is, or std::nullopt. Takes no sign and no blanks.
std::optional<std::uint64_t> parseNumber(std::string_view text, int base = 10);
// Replaces each \x and two hexadecimal digits by the byte that they stand for, and returns the
// text. udev and libdevmapper write bytes outside their safe sets in this way.
std::string decodeHexEscapes(std::string_view text);
// Returns true if the text can be the name of a kernel device in a path. It then has no slash and
// no dot.
bool isDeviceName(std::string_view text);

// The number of a block device, which the kernel writes as "8:16".
struct DeviceNumber {
  std::uint32_t major = 0;  // 12 bits
  std::uint32_t minor = 0;  // 20 bits

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the operator's own 0 for a pointer
  auto operator<=>(const DeviceNumber&) const = default;
  std::string text() const { return std::to_string(major) + ':' + std::to_string(minor); }
};

// Returns std::nullopt if they are not two decimal numbers in range.
std::optional<DeviceNumber> deviceNumber(std::string_view major, std::string_view minor);
// Reads the two numbers with a colon between them.
std::optional<DeviceNumber> parseDeviceNumber(std::string_view text);

// Reads the words of a line one by one. After the first word that is missing or not of the asked
// kind, failed() stays true and every read returns an empty value: a parser checks once, at the
// end.
class WordReader {
 public:
  // The longest line that is read. It has room for more than 4096 paths; the driver writes no
  // longer one.
  static constexpr std::size_t kMostBytes = std::size_t{1} << 18;

  explicit WordReader(std::string_view line);
  std::string_view word();
  // Reads the number of words that follow. Fails if the line is too short for them, so that a loop
  // may rely on the number.
  std::size_t count();
  std::uint64_t number();
  DeviceNumber device();
  std::vector<std::string> words(std::size_t count);
  void skip(std::size_t count);
  bool failed() const { return failed_; }
  // Returns true if all words were read and each was of the asked kind.
  bool finished() const { return !failed_ && rest_.empty(); }

 private:
  template <class Value>
  Value take(const std::optional<Value>& value) {
    if (!value) failed_ = true;
    return failed_ ? Value{} : *value;
  }

  std::string_view rest_;
  bool failed_;
};

}  // namespace tavrenix::sys
