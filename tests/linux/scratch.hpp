// A folder for files, in memory where that can be, gone with the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tavrenix::test {

class Scratch {
 public:
  Scratch() {
    const std::filesystem::path memory = "/dev/shm";
    const auto place = is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::string pattern = place / "tavrenix.XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    folder_ = pattern;
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() { std::filesystem::remove_all(folder_); }

  const std::filesystem::path& folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

}  // namespace tavrenix::test
