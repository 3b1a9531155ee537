// The file of an image, which is read and replaced as a whole.
//
// Errors: functions throw std::system_error if a system call fails, and ImageError for any other
// reason. Neither names the file: only the caller knows the name that its user typed.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "runtime/posix.hpp"

namespace tavrenix::lab {

inline constexpr std::size_t kLargestImage = std::size_t{1} << 30;

// Returns the path with every symbolic link followed.
std::string resolved(const std::string& path);

// Returns the contents of a regular file of at most kLargestImage bytes.
std::string readImageFile(const std::string& path);

// The lock on an image file, for a change. Of all processes that use this class, one at a time has
// it.
class LockedImageFile {
 public:
  static constexpr std::chrono::seconds kLockTimeout{10};

  // REQUIRES: path is resolved.
  // Errors: EBUSY if other processes keep the file locked for longer than `timeout`; EACCES if the
  // caller may not write to the file; ImageError if the file has a second hard link, which would
  // keep the old text.
  explicit LockedImageFile(std::string path, std::chrono::milliseconds timeout = kLockTimeout);

  std::string read() const;

  // Puts a new file in the place of the old one. Owner, group, mode and access control list stay
  // the same. A process that reads meanwhile sees the old text or the new one. After an error the
  // old file is still in place, unchanged.
  // Errors: EPERM if the caller may not give the new file the old one's owner or group.
  void replace(std::string_view text) const;

 private:
  std::string path_;
  ob::FileDescriptor file_;
};

}  // namespace tavrenix::lab
