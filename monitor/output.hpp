// Where reports go: standard output, or a file that is replaced whole.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace tavrenix::monitor {

// Writes text to standard output. Errors: throws Failure if not all of it arrived.
void print(std::string_view text);

// Returns the file's content. Errors: throws Failure, which names the file and the cause, also if
// it has more than 64 MiB.
std::string readFile(const std::string& path);

// Replaces the file by one of that content and mode, or leaves it as it was: the content is written
// beside it first. Errors: throws Failure, which names the file and the cause.
void replaceFile(const std::string& path, std::string_view content, unsigned mode = 0644);

// How standard output shows text.
struct Screen {
  std::size_t width = 0;   // columns, 0 if nothing limits them
  bool colours = false;    // a terminal, and NO_COLOR is not set
  bool asciiOnly = false;  // the locale's characters are not UTF-8
};
// Reads the terminal and the variables COLUMNS, NO_COLOR and TERM.
Screen screen();

// How far long work has come: a line on standard error if that is a terminal, from the second
// second on. The end of the object removes the line.
class Progress {
 public:
  // work: what is done, such as "reading units".
  explicit Progress(std::string work);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void show(std::size_t done, std::size_t total);

 private:
  void write(const std::string& text);

  const std::string work_;
  const bool isTerminal_;
  std::chrono::steady_clock::time_point next_;  // when to show again
  std::size_t width_ = 0;                       // of the line
};

}  // namespace tavrenix::monitor
