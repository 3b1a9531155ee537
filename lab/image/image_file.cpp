#include "lab/image/image_file.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include "lab/image/place.hpp"

namespace tavrenix::lab {

namespace {

using ob::FileDescriptor;

[[noreturn]] void throwErrno(const char* what, int error = errno) {
  throw std::system_error(error, std::generic_category(), what);
}

void check(ssize_t result, const char* what) {
  if (result < 0) throwErrno(what);
}

FileDescriptor opened(const std::string& path, int flags, const char* failure) {
  FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, S_IRUSR | S_IWUSR));
  if (!file) throwErrno(failure);
  return file;
}

struct stat statusOf(const FileDescriptor& file) {
  struct stat status {};
  check(::fstat(file.get(), &status), "cannot be looked at");
  return status;
}

std::string readAll(const FileDescriptor& file) {
  const struct stat status = statusOf(file);
  if (S_ISDIR(status.st_mode)) throw ImageError("is a directory");
  if (!S_ISREG(status.st_mode)) throw ImageError("is not a regular file");
  const auto size = static_cast<std::size_t>(status.st_size);
  // One byte more than the file has, so that the read at the end of the file needs no resize.
  std::string text(size <= kLargestImage ? size + 1 : 0, '\0');
  std::size_t filled = 0;
  while (size <= kLargestImage && filled <= kLargestImage) {
    if (filled == text.size()) text.resize(std::min(filled * 2, kLargestImage + 1));
    const ssize_t got = ::read(file.get(), text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    check(got, "cannot be read");
    filled += static_cast<std::size_t>(got);
    if (got == 0) {
      text.resize(filled);
      return text;
    }
  }
  throw ImageError("is larger than 1 GiB");
}

void writeAll(const FileDescriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t wrote = ::write(file.get(), text.data(), text.size());
    if (wrote < 0 && errno == EINTR) continue;
    check(wrote, "cannot be written");
    text.remove_prefix(static_cast<std::size_t>(wrote));
  }
}

// The access control list of a file, as the kernel stores it.
constexpr char kAccessList[] = "system.posix_acl_access";

// Gives the new file the access control list of the old one. If the old one has none, removes the
// list that the new file has inherited from its folder.
void copyAccessList(const FileDescriptor& from, const FileDescriptor& to) {
  std::vector<char> list(XATTR_SIZE_MAX);
  const ssize_t size = ::fgetxattr(from.get(), kAccessList, list.data(), list.size());
  const bool hasNone = size < 0 && (errno == ENODATA || errno == EOPNOTSUPP);
  constexpr char kFailure[] = "cannot be given the access control list of the old file";
  if (!hasNone) {
    check(size, kFailure);
    check(::fsetxattr(to.get(), kAccessList, list.data(), static_cast<std::size_t>(size), 0),
          kFailure);
  } else if (::fremovexattr(to.get(), kAccessList) != 0 && errno != ENODATA &&
             errno != EOPNOTSUPP) {
    throwErrno(kFailure);
  }
}

// Gives the new file the owner, group, access control list and mode of the old one. The mode comes
// last: until then only the owner can open the file.
void copyRights(const FileDescriptor& from, const FileDescriptor& to) {
  const struct stat old = statusOf(from);
  const struct stat fresh = statusOf(to);
  if (old.st_uid != fresh.st_uid || old.st_gid != fresh.st_gid) {
    check(::fchown(to.get(), old.st_uid, old.st_gid),
          "cannot be replaced by a file of the same owner and group");
  }
  copyAccessList(from, to);
  check(::fchmod(to.get(), old.st_mode & 07777), "cannot be given its mode");
}

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// Returns the name of the new file, which is the same every time. So the next process removes the
// file of a process that was killed.
std::string temporaryFor(const std::string& path) {
  return folderOf(path) + "." + path.substr(path.rfind('/') + 1) + ".tavrenix-lab";
}

// Writes the folder to the disk. Ignores failures: the new file is in place already, so a folder
// that cannot be synced must not be reported as a failed write.
void syncFolder(const std::string& path) {
  const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) ::fsync(folder.get());
}

bool isStillAt(const FileDescriptor& file, const std::string& path) {
  struct stat named {};
  const struct stat held = statusOf(file);
  return ::stat(path.c_str(), &named) == 0 && named.st_dev == held.st_dev &&
         named.st_ino == held.st_ino;
}

// Returns the file, opened and locked. Returns none if another program has the lock or has just put
// a new file in its place. Opens for writing, so that a write-protected file is refused and not
// replaced.
FileDescriptor lockedFile(const std::string& path) {
  FileDescriptor file = opened(path, O_RDWR | O_NONBLOCK, "cannot be opened for a change");
  if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
    return isStillAt(file, path) ? std::move(file) : FileDescriptor();
  }
  if (errno != EWOULDBLOCK && errno != EINTR) throwErrno("cannot be locked");
  return FileDescriptor();
}

}  // namespace

std::string resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  if (!real) throwErrno("cannot be opened");
  return real.get();
}

// Opens without waiting: a pipe would block until a writer comes. readAll refuses it.
std::string readImageFile(const std::string& path) {
  return readAll(opened(path, O_RDONLY | O_NONBLOCK, "cannot be opened"));
}

LockedImageFile::LockedImageFile(std::string path, std::chrono::milliseconds timeout)
    : path_(std::move(path)) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kPause(2);
  const Clock::time_point deadline = Clock::now() + timeout;
  while (!(file_ = lockedFile(path_))) {
    if (Clock::now() >= deadline) throwErrno("is kept locked by another program", EBUSY);
    std::this_thread::sleep_for(kPause);
  }
  if (statusOf(file_).st_nlink > 1) {
    throw ImageError("has more than one name (hard links), and a change would reach only this one");
  }
}

std::string LockedImageFile::read() const {
  return readAll(file_);
}

void LockedImageFile::replace(std::string_view text) const {
  const std::string temporary = temporaryFor(path_);
  ::unlink(temporary.c_str());  // left by a killed process: a living one would hold the lock
  try {
    const FileDescriptor file = opened(temporary, O_WRONLY | O_CREAT | O_EXCL,
                                       "cannot be replaced by a new file beside it");
    copyRights(file_, file);
    writeAll(file, text);
    check(::fsync(file.get()), "cannot be written");
    check(std::rename(temporary.c_str(), path_.c_str()), "cannot be replaced");
  } catch (...) {
    ::unlink(temporary.c_str());
    throw;
  }
  syncFolder(folderOf(path_));
}

}  // namespace tavrenix::lab
