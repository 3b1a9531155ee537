#include "lab/image_file.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "lab/fault.hpp"

namespace tavrenix::lab {

namespace {

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void check(int result, const char* what) {
  if (result < 0) throwErrno(what);
}

struct stat statusOf(const File& file) {
  struct stat status {};
  check(::fstat(file.descriptor(), &status), "cannot be looked at");
  return status;
}

std::string readAll(const File& file) {
  const struct stat status = statusOf(file);
  if (S_ISDIR(status.st_mode)) throw ImageError("is a directory");
  if (!S_ISREG(status.st_mode)) throw ImageError("is not a regular file");
  const auto size = static_cast<std::size_t>(status.st_size);
  // One byte more than the file has, so that one that grows meanwhile is noticed.
  std::string text(size <= kLargestImage ? size + 1 : 0, '\0');
  std::size_t filled = 0;
  while (size <= kLargestImage && filled <= kLargestImage) {
    if (filled == text.size()) text.resize(std::min(filled * 2, kLargestImage + 1));
    const ssize_t got = ::read(file.descriptor(), text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    check(got < 0 ? -1 : 0, "cannot be read");
    filled += static_cast<std::size_t>(got);
    if (got == 0) {
      text.resize(filled);
      return text;
    }
  }
  throw ImageError("is larger than 1 GiB");
}

void writeAll(const File& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t wrote = ::write(file.descriptor(), text.data(), text.size());
    if (wrote < 0 && errno == EINTR) continue;
    check(wrote < 0 ? -1 : 0, "cannot be written");
    text.remove_prefix(static_cast<std::size_t>(wrote));
  }
}

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// One name for each image, so that what a killed process left behind is overwritten by the next.
std::string temporaryFor(const std::string& path) {
  return folderOf(path) + "." + path.substr(path.rfind('/') + 1) + ".tavrenix-lab";
}

// As far as it can be done. The new text stands by then, and so a folder that cannot be synced, or
// not even be read, must not be told as a failed write.
void syncFolder(const std::string& path) {
  const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  [[maybe_unused]] const int synced = ::fsync(folder);
  ::close(folder);
}

bool isStillAt(const File& file, const std::string& path) {
  struct stat named {};
  const struct stat held = statusOf(file);
  return ::stat(path.c_str(), &named) == 0 && named.st_dev == held.st_dev &&
         named.st_ino == held.st_ino;
}

}  // namespace

File::File(const std::string& path, int flags, unsigned mode, const char* failure)
    : descriptor_(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode)) {
  check(descriptor_, failure);
}

File::~File() {
  ::close(descriptor_);
}

std::string resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  if (!real) throwErrno("cannot be opened");
  return real.get();
}

// Without waiting, so that a pipe is refused and not hung at.
std::string readImageFile(const std::string& path) {
  return readAll(File(path, O_RDONLY | O_NONBLOCK));
}

LockedImageFile::LockedImageFile(std::string path) : path_(std::move(path)) {
  do {
    // For writing, so that a file which its owner protected is not replaced behind its back.
    file_.emplace(path_, O_RDWR | O_NONBLOCK);
    int locked = 0;
    do {
      locked = ::flock(file_->descriptor(), LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    check(locked, "cannot be locked");
    // Another writer may have put a new file in its place while this one waited.
  } while (!isStillAt(*file_, path_));
}

std::string LockedImageFile::read() const {
  return readAll(*file_);
}

void LockedImageFile::replace(std::string_view text) const {
  const std::string temporary = temporaryFor(path_);
  const struct stat old = statusOf(*file_);
  ::unlink(temporary.c_str());  // what a killed process left; the lock says that it is nobody's now
  try {
    const File file(temporary, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR,
                    "cannot be replaced by a new file beside it");
    // Only the superuser may give files away; for others the file becomes their own.
    [[maybe_unused]] const int given = ::fchown(file.descriptor(), old.st_uid, old.st_gid);
    check(::fchmod(file.descriptor(), old.st_mode & 07777), "cannot be given its mode");
    writeAll(file, text);
    check(::fsync(file.descriptor()), "cannot be written");
    check(::rename(temporary.c_str(), path_.c_str()), "cannot be replaced");
  } catch (...) {
    const int saved = errno;
    ::unlink(temporary.c_str());
    errno = saved;
    throw;
  }
  syncFolder(folderOf(path_));
}

}  // namespace tavrenix::lab
