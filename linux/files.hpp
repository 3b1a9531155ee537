// Reading the files of the machine, below a root folder: "/" for the machine itself, a recorded
// tree for tests.
//
// Paths begin with a slash and are made from numbers and from checked kernel names alone. No
// operation waits for storage: only sysfs, tables of /proc and the udev database are read. Any
// thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavrenix::sys {

class HostFiles {
 public:
  // No attribute of sysfs is longer than a page; records of udev are cut here as well.
  static constexpr std::size_t kMostBytes = 65536;
  static constexpr std::size_t kMostEntries = 65536;
  static constexpr std::size_t kMostTableBytes = std::size_t{64} << 20;

  // root without a slash at its end; empty for the machine itself.
  explicit HostFiles(std::string root = {}) : root_(std::move(root)) {}

  // The content, cut at kMostBytes. Nothing where the file is not there or cannot be read, and
  // where it is a symbolic link itself.
  std::optional<std::string> read(const std::string& path) const;
  // The same of a table of /proc, which takes many reads and has no bound but its number of lines.
  std::optional<std::string> readTable(const std::string& path) const;
  // As read() for several files, in fewer system calls.
  template <std::size_t N>
  std::array<std::optional<std::string>, N> readTogether(
      const std::array<std::string, N>& paths) const {
    std::array<std::optional<std::string>, N> contents;
    readAll(paths.data(), contents.data(), N);
    return contents;
  }
  // Where the symbolic link leads.
  std::optional<std::string> link(const std::string& path) const;
  struct Entry {
    std::string name;
    std::uint64_t inode;  // as the folder has it: mostly what inode() answers
  };
  // What is in the folder under names that can be those of devices, in no order.
  std::vector<Entry> entries(const std::string& folder) const;
  bool exists(const std::string& path) const;
  // The number of the inode of a file, a folder or, as they are not followed, a link. The kernel
  // gives every object of sysfs one that it does not give again (64-bit kernels since 5.5).
  std::optional<std::uint64_t> inode(const std::string& path) const;

 private:
  void readAll(const std::string* paths, std::optional<std::string>* contents,
               std::size_t count) const;

  std::string root_;
};

}  // namespace tavrenix::sys
