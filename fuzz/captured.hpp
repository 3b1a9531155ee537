// What the code under test writes to a stream of the process, kept from the terminal.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tavrenix::fuzz {

// Takes the place of the stream, which is stdout or stderr, for as long as it lives.
class Captured {
 public:
  explicit Captured(FILE*& stream)
      : stream_(stream), original_(stream), memory_(::open_memstream(&text_, &size_)) {
    stream_ = memory_;
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  ~Captured() {
    stream_ = original_;
    std::fclose(memory_);
    std::free(text_);
  }
  std::string text() {
    std::fflush(memory_);
    return {text_, size_};
  }

 private:
  FILE*& stream_;
  FILE* original_;
  char* text_ = nullptr;
  std::size_t size_ = 0;
  FILE* memory_;
};

}  // namespace tavrenix::fuzz
