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
  // No line of the driver is longer than this many words: 4096 paths with room to spare.
  static constexpr std::size_t kMostWords = 65536;

  explicit WordReader(std::string_view line) {
    if (auto words = splitWords(line, kMostWords)) {
      words_ = std::move(*words);
    } else {
      failed_ = true;
    }
  }

  std::string_view word() {
    if (failed_ || next_ == words_.size()) {
      failed_ = true;
      return {};
    }
    return words_[next_++];
  }
  // A count never exceeds the words that are left, so it is safe to loop on.
  std::size_t count() {
    const auto value = parseNumber(word());
    if (!value || *value > words_.size() - next_) failed_ = true;
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
  DeviceNumber device() {
    const auto value = parseDeviceNumber(word());
    if (!value) failed_ = true;
    return value.value_or(DeviceNumber{});
  }
  bool failed() const { return failed_; }
  // Everything read, and all of it as asked for.
  bool finished() const { return !failed_ && next_ == words_.size(); }

 private:
  std::vector<std::string_view> words_;
  std::size_t next_ = 0;
  bool failed_ = false;
};

}  // namespace tavrenix::sys
