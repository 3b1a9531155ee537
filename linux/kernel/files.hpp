// Reading the files of the machine, below a root folder: "/" for the machine itself, a recorded
// tree for tests.
//
// REQUIRES: paths begin with a slash, and are made only of numbers and of checked kernel names.
// No function waits for storage: they read only sysfs, tables of /proc and the udev database.
// Thread safety: any thread.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "runtime/mutex.hpp"
#include "runtime/posix.hpp"

namespace tavrenix::sys {

// The content of a file, or the reason why there is none.
struct FileText {
  int error = 0;  // 0, or an error number
  std::string text;

  explicit operator bool() const { return error == 0; }
  // Returns true if there is no such file. A file that exists and cannot be read is not absent.
  bool isAbsent() const { return error == ENOENT; }
};

// Files that have been read and are still to be closed. A run of them takes one call to close.
//
// Thread safety: any function on any thread.
class ReadFiles {
 public:
  // So many are closed together.
  static constexpr std::size_t kMost = 64;

  ReadFiles() = default;
  ReadFiles(const ReadFiles&) = delete;
  ReadFiles& operator=(const ReadFiles&) = delete;
  ~ReadFiles() { close(); }
  // Ownership: takes the descriptor over. Closes it at once unless files are held.
  void add(ob::FileDescriptor file) OB_EXCLUDES(mutex_);
  // Closes all. Returns false if there was none.
  bool close() OB_EXCLUDES(mutex_);
  // Between these two, which may be nested, files wait to be closed together.
  void hold() OB_EXCLUDES(mutex_);
  void letGo() OB_EXCLUDES(mutex_);

 private:
  void closeAll() OB_REQUIRES(mutex_);

  ob::Mutex mutex_;
  int holds_ OB_GUARDED_BY(mutex_) = 0;
  std::vector<int> files_ OB_GUARDED_BY(mutex_);
};

class HostFiles {
 public:
  // While one exists, descriptors of files that were read are closed many at once. At most
  // ReadFiles::kMost stay open meanwhile, or fewer if the process may not have so many.
  class Burst {
   public:
    explicit Burst(const HostFiles& files) : read_(*files.read_) { read_.hold(); }
    ~Burst() { read_.letGo(); }
    Burst(const Burst&) = delete;
    Burst& operator=(const Burst&) = delete;

   private:
    ReadFiles& read_;
  };

  // The most bytes of a file. No attribute of sysfs is longer than a page; records of udev may be
  // cut.
  static constexpr std::size_t kMostBytes = 65536;
  static constexpr std::size_t kMostEntries = 65536;
  static constexpr std::size_t kMostTableBytes = std::size_t{64} << 20;

  // root: without a slash at its end, and empty for the machine itself.
  explicit HostFiles(std::string root = {}) : root_(std::move(root)) {}

  // Returns the content, cut at kMostBytes.
  // Errors: ENOENT if there is no such file, ELOOP if it is a symbolic link, or the kernel's own.
  FileText read(const std::string& path) const;
  // Returns a table of /proc, which takes many reads and ends at kMostTableBytes.
  FileText readTable(const std::string& path) const;
  // Reads several files in one burst, in the order of the paths.
  std::vector<FileText> readTogether(const std::vector<std::string>& paths) const;
  // Opens a file of sysfs that will be read many times. Returns none if it cannot be opened.
  ob::FileDescriptor open(const std::string& path) const;
  // Reads such a file from its beginning, which makes the kernel produce its text anew.
  static FileText readAgain(const ob::FileDescriptor& file);
  // Returns the target of the symbolic link, or std::nullopt if it cannot be read.
  std::optional<std::string> link(const std::string& path) const;
  struct Entry {
    std::string name;
    std::uint64_t inode;  // as the folder lists it; usually what inode() returns
  };
  // Returns the entries of the folder that have names of devices, in no particular order. Returns
  // no entries if the folder does not exist, and std::nullopt if it cannot be read.
  std::optional<std::vector<Entry>> entries(const std::string& folder) const;
  bool exists(const std::string& path) const;
  // Tells a file from one that later takes its place under the same name, as udevd's records do.
  struct Version {
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0, nanoseconds = 0;  // when the kernel last changed the inode
    bool operator==(const Version&) const = default;
  };
  // Returns std::nullopt if there is no such file or the kernel does not say.
  std::optional<Version> version(const std::string& path) const;
  // Returns the inode number of a file, a folder or a link, which is not followed. In sysfs, 64-bit
  // kernels since 5.5 never use a number again.
  std::optional<std::uint64_t> inode(const std::string& path) const;

 private:
  std::string root_;
  std::unique_ptr<ReadFiles> read_ = std::make_unique<ReadFiles>();
};

}  // namespace tavrenix::sys
