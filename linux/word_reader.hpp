// Words taken one by one from a line whose counts tell how many words follow.
#pragma once

#include <string>
#include <vector>

#include "linux/device_number.hpp"

namespace tavrenix::sys {

// After the first word that is missing or not what was asked for, failed() stays true and every
// read yields an empty value: a parser reads on and asks once.
class WordReader {
 public:
  // No line of the driver is longer: 4096 paths with room to spare.
  static constexpr std::size_t kMostBytes = std::size_t{1} << 18;

  explicit WordReader(std::string_view line)
      : rest_(trim(line)), failed_(line.size() > kMostBytes) {}

  std::string_view word() {
    const auto word = takeWord(rest_);
    if (word.empty()) failed_ = true;
    return failed_ ? std::string_view{} : word;
  }
  // A count never exceeds the words that can be left, so it is safe to loop on.
  std::size_t count() {
    const auto value = parseNumber(word());
    if (!value || *value > rest_.size() / 2) failed_ = true;  // a blank stands before each
    return failed_ ? 0 : static_cast<std::size_t>(*value);
  }
  std::uint64_t number() {
    const auto value = parseNumber(word());
    if (!value) failed_ = true;
    return failed_ ? 0 : *value;
  }
  std::vector<std::string> words(std::size_t count) {
    std::vector<std::string> taken;
    for (std::size_t i = 0; i < count && !failed_; ++i) taken.emplace_back(word());
    return taken;
  }
  void skip(std::size_t count) {
    for (std::size_t i = 0; i < count && !failed_; ++i) word();
  }
  DeviceNumber device() {
    const auto value = parseDeviceNumber(word());
    if (!value) failed_ = true;
    return value.value_or(DeviceNumber{});
  }
  bool failed() const { return failed_; }
  // Everything read, and all of it as asked for.
  bool finished() const { return !failed_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool failed_;
};

}  // namespace tavrenix::sys
