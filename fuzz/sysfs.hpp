// The files of a machine with one multipath map over two disks: 254:0 over 8:0 and 8:16. What they
// say is the input's, where they stand is fixed.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "tests/linux/scratch.hpp"

namespace tavrenix::fuzz {

class Sysfs {
 public:
  Sysfs();

  const std::filesystem::path& root() const { return scratch_.folder(); }
  // Writes every file anew, or takes it away.
  void write(FuzzedDataProvider& input) const;

 private:
  void addDevice(const std::string& number, const std::string& folder) const;

  test::Scratch scratch_;
};

}  // namespace tavrenix::fuzz
