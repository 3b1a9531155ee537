#include "monitor/verb_options.hpp"

#include <getopt.h>

#include <cctype>
#include <charconv>

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

CommandLine::CommandLine(int argc, char** argv, const std::vector<KnownOption>& known,
                         std::size_t mostWords) {
  std::string letters = ":";
  std::vector<option> rows;
  for (const KnownOption& one : known) {
    rows.push_back(
        {one.name, one.takesValue ? required_argument : no_argument, nullptr, one.letter});
    names_[one.letter] = std::string("--") + one.name;
    if (std::isupper(static_cast<unsigned char>(one.letter)) != 0) continue;
    letters += one.letter;
    if (one.takesValue) letters += ':';
  }
  rows.push_back({});
  const std::string help = std::string("; see --help");
  opterr = 0;
  optind = 0;  // a new parse
  for (;;) {
    const int letter = ::getopt_long(argc, argv, letters.c_str(), rows.data(), nullptr);
    if (letter == -1) break;
    if (letter == ':' || letter == '?') {
      std::string fault = "the option " + visible(argv[optind - 1]);
      fault += letter == ':' ? " needs a value" : " is unknown or not used rightly";
      throw Failure(fault.append(help));
    }
    values_[static_cast<char>(letter)].push_back(optarg == nullptr ? "" : optarg);
  }
  words_.assign(argv + optind, argv + argc);
  if (words_.size() > mostWords) {
    throw Failure("unexpected argument " + visible(words_[mostWords]) + help);
  }
}

std::optional<std::string> CommandLine::value(char letter) const {
  const auto found = values_.find(letter);
  if (found == values_.end()) return std::nullopt;
  return found->second.back();
}

std::vector<std::string> CommandLine::values(char letter) const {
  const auto found = values_.find(letter);
  return found == values_.end() ? std::vector<std::string>{} : found->second;
}

std::optional<std::uint64_t> CommandLine::number(char letter, std::uint64_t least,
                                                 std::uint64_t most) const {
  const auto text = value(letter);
  if (!text) return std::nullopt;
  std::uint64_t number = 0;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, number);
  if (error == std::errc() && stop == end && number >= least && number <= most) return number;
  throw Failure(names_.at(letter) + " must be a number from " + std::to_string(least) + " to " +
                std::to_string(most) + ", not " + visible(*text));
}

}  // namespace tavrenix::monitor
