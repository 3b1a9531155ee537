// The files of a test of the lab.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "tests/linux/scratch.hpp"

namespace tavrenix::lab {

inline std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline const std::string kSample = contentsOf(TAVRENIX_ROOT "samples/small.json");

// A folder with an image.
class ImageFolder : public test::Scratch {
 public:
  std::string path() const { return folder() / "image.json"; }
  void write(std::string_view text) const { std::ofstream(path(), std::ios::binary) << text; }
};

}  // namespace tavrenix::lab
