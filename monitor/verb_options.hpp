// The words and options of one verb.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tavrenix::monitor {

struct KnownOption {
  const char* name;  // of the long form
  char letter;       // of the short form; a capital is for this program alone and has none
  bool takesValue = false;
};

class CommandLine {
 public:
  // argv: begins with the verb. Errors: throws Failure for an option that is not known, lacks its
  // value or has one too many, and for more words than mostWords.
  CommandLine(int argc, char** argv, const std::vector<KnownOption>& known, std::size_t mostWords);

  const std::vector<std::string>& words() const { return words_; }
  bool has(char letter) const { return values_.contains(letter); }
  // The option's last value.
  std::optional<std::string> value(char letter) const;
  // All of its values.
  std::vector<std::string> values(char letter) const;
  // The value as a whole number in that range. Errors: throws Failure, which names the option.
  std::optional<std::uint64_t> number(char letter, std::uint64_t least, std::uint64_t most) const;

 private:
  std::map<char, std::vector<std::string>> values_;
  std::map<char, std::string> names_;
  std::vector<std::string> words_;
};

}  // namespace tavrenix::monitor
