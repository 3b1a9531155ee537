// Folders for the files of a fuzzing program, in memory where that can be.
#pragma once

#include <filesystem>
#include <string>

#include "fuzz/promise.hpp"

namespace tavrenix::fuzz {

// A new folder, which the caller removes.
inline std::filesystem::path scratchFolder() {
  const char* memory = "/dev/shm";
  const std::filesystem::path place =
      std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
  std::string pattern = (place / "tavrenix-fuzz.XXXXXX").string();
  expect(::mkdtemp(pattern.data()) != nullptr, "there is a folder for scratch files");
  return pattern;
}

}  // namespace tavrenix::fuzz
