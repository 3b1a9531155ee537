// The files of a machine with one multipath map over two disks: 254:0 over 8:0 and 8:16. What they
// say is the input's, where they stand is fixed.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <filesystem>
#include <string>

namespace tavrenix::fuzz {

class Sysfs {
 public:
  Sysfs();
  Sysfs(const Sysfs&) = delete;
  Sysfs& operator=(const Sysfs&) = delete;
  ~Sysfs() { std::filesystem::remove_all(root_); }

  std::string root() const { return root_; }
  // Writes every file anew, or takes it away.
  void write(FuzzedDataProvider& input) const;

 private:
  void addDevice(const std::string& number, const std::string& folder) const;

  std::filesystem::path root_;
};

}  // namespace tavrenix::fuzz
