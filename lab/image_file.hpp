// The file that an image lives in: reading it, and replacing it whole.
//
// Failures of the system are thrown as std::system_error with the error number; a file that cannot
// be an image at all as ImageError.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::lab {

inline constexpr std::size_t kLargestImage = std::size_t{1} << 30;

// An open file descriptor.
class File {
 public:
  // failure is what a message says where it cannot be opened.
  File(const std::string& path, int flags, unsigned mode = 0,
       const char* failure = "cannot be opened");
  // Takes over an open one.
  explicit File(int descriptor) noexcept : descriptor_(descriptor) {}
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int descriptor() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

// The file's path with every symbolic link followed.
std::string resolved(const std::string& path);
std::string readImageFile(const std::string& path);

// The only writer of an image file for as long as it lives, among all that use this class.
class LockedImageFile {
 public:
  // Waits for the other writers. path is resolved.
  explicit LockedImageFile(std::string path);
  std::string read() const;
  // Readers see the old text or the new text, never a part. Where it throws, the old text still
  // stands.
  void replace(std::string_view text) const;

 private:
  std::string path_;
  std::optional<File> file_;
};

}  // namespace tavrenix::lab
