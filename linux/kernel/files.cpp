#include "linux/kernel/files.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "linux/text/words.hpp"

namespace tavrenix::sys {

namespace {

// How the end of a file shows. An attribute of sysfs comes in one piece, so a short read is its
// end, and most take one call. A table of /proc comes about a page at a time, so only an empty read
// is its end.
enum class End { kShortRead, kNothing };

FileText readToEnd(int file, std::size_t most, End end) {
  FileText content;
  char buffer[4096];
  while (content.text.size() < most) {
    const ssize_t got = ::read(file, buffer, sizeof buffer);
    if (got < 0) return {errno, {}};
    if (got == 0) break;
    content.text.append(buffer, static_cast<std::size_t>(got));
    if (end == End::kShortRead && static_cast<std::size_t>(got) < sizeof buffer) break;
  }
  return content;
}

// Opens the file. The folders on the way may be links of sysfs, but the file itself must be none.
int openToRead(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
}

// Closes a run of consecutive descriptors with one call. All of them belong to the caller, so no
// other thread can have one. Returns the end of the run.
std::size_t closeRun(const std::vector<int>& files, std::size_t begin) {
  std::size_t end = begin + 1;
  while (end < files.size() && files[end] == files[end - 1] + 1) ++end;
  const auto first = static_cast<unsigned>(files[begin]);
  const auto last = static_cast<unsigned>(files[end - 1]);
  if (end - begin == 1 || ::close_range(first, last, 0) != 0) {
    for (std::size_t i = begin; i < end; ++i) ::close(files[i]);
  }
  return end;
}

}  // namespace

void ReadFiles::add(ob::FileDescriptor file) {
  const ob::MutexLock lock(mutex_);
  if (holds_ == 0) return;
  files_.push_back(file.release());  // hold() has made room
  if (files_.size() == kMost) closeAll();
}

bool ReadFiles::close() {
  const ob::MutexLock lock(mutex_);
  const bool any = !files_.empty();
  closeAll();
  return any;
}

void ReadFiles::hold() {
  const ob::MutexLock lock(mutex_);
  files_.reserve(kMost);
  ++holds_;
}

void ReadFiles::letGo() {
  const ob::MutexLock lock(mutex_);
  if (--holds_ == 0) closeAll();
}

void ReadFiles::closeAll() {
  for (std::size_t begin = 0; begin < files_.size();) begin = closeRun(files_, begin);
  files_.clear();
}

FileText HostFiles::read(const std::string& path) const {
  const std::string whole = root_ + path;
  ob::FileDescriptor file(openToRead(whole));
  if (!file && (errno == EMFILE || errno == ENFILE) && read_->close()) {
    file = ob::FileDescriptor(openToRead(whole));
  }
  if (!file) return {errno, {}};
  FileText content = readToEnd(file.get(), kMostBytes, End::kShortRead);
  read_->add(std::move(file));
  return content;
}

FileText HostFiles::readTable(const std::string& path) const {
  const ob::FileDescriptor file = open(path);
  if (!file) return {errno, {}};
  return readToEnd(file.get(), kMostTableBytes, End::kNothing);
}

std::vector<FileText> HostFiles::readTogether(const std::vector<std::string>& paths) const {
  const Burst burst(*this);
  std::vector<FileText> contents;
  contents.reserve(paths.size());
  for (const auto& path : paths) contents.push_back(read(path));
  return contents;
}

ob::FileDescriptor HostFiles::open(const std::string& path) const {
  return ob::FileDescriptor(openToRead(root_ + path));
}

FileText HostFiles::readAgain(const ob::FileDescriptor& file) {
  char buffer[4096];
  const ssize_t got = ::pread(file.get(), buffer, sizeof buffer, 0);
  if (got < 0) return {errno, {}};
  return {0, std::string(buffer, static_cast<std::size_t>(got))};
}

std::optional<std::string> HostFiles::link(const std::string& path) const {
  char target[4096];
  const ssize_t length = ::readlink((root_ + path).c_str(), target, sizeof target);
  if (length < 0 || static_cast<std::size_t>(length) == sizeof target) return std::nullopt;
  return std::string(target, static_cast<std::size_t>(length));
}

std::optional<std::vector<HostFiles::Entry>> HostFiles::entries(const std::string& folder) const {
  std::vector<Entry> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir((root_ + folder).c_str()), ::closedir);
  if (open == nullptr && errno == ENOENT) return found;
  if (open == nullptr) return std::nullopt;
  while (found.size() < kMostEntries) {
    errno = 0;
    const dirent* entry = ::readdir(open.get());
    if (entry == nullptr && errno != 0) return std::nullopt;
    if (entry == nullptr) break;
    if (isDeviceName(entry->d_name)) found.push_back({entry->d_name, entry->d_ino});
  }
  return found;
}

bool HostFiles::exists(const std::string& path) const {
  return ::access((root_ + path).c_str(), F_OK) == 0;
}

std::optional<HostFiles::Version> HostFiles::version(const std::string& path) const {
  struct stat found {};
  if (::lstat((root_ + path).c_str(), &found) != 0) return std::nullopt;
  return Version{found.st_ino, found.st_size, found.st_ctim.tv_sec, found.st_ctim.tv_nsec};
}

std::optional<std::uint64_t> HostFiles::inode(const std::string& path) const {
  struct stat found {};
  if (::lstat((root_ + path).c_str(), &found) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(found.st_ino);
}

}  // namespace tavrenix::sys
