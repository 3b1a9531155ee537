#include "linux/files.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "linux/text.hpp"

namespace tavrenix::sys {

namespace {

// What ends a file: a short read, since attributes of sysfs come in one piece, so that most take
// one call; or nothing left, since a table of /proc comes about a page at a time.
enum class End { kShortRead, kNothing };

std::optional<std::string> readToEnd(int file, std::size_t most, End end) {
  std::string content;
  char buffer[4096];
  while (content.size() < most) {
    const ssize_t got = ::read(file, buffer, sizeof buffer);
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    content.append(buffer, static_cast<std::size_t>(got));
    if (end == End::kShortRead && static_cast<std::size_t>(got) < sizeof buffer) break;
  }
  return content;
}

// Files that are open until the end of the block.
class OpenFiles {
 public:
  explicit OpenFiles(std::size_t most) { files_.reserve(most); }
  OpenFiles(const OpenFiles&) = delete;
  OpenFiles& operator=(const OpenFiles&) = delete;
  ~OpenFiles() {
    for (std::size_t begin = 0; begin < files_.size();) begin = closeRun(begin);
  }
  // The folders on the way may be links of sysfs; what is read never is one.
  int open(const std::string& path) {
    const int file =
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (file >= 0) files_.push_back(file);
    return file;
  }

 private:
  // Closes files whose numbers run on with one call: all numbers in between are ours, so no other
  // thread can have them. Returns where the run ends.
  std::size_t closeRun(std::size_t begin) const {
    std::size_t end = begin + 1;
    while (end < files_.size() && files_[end] == files_[end - 1] + 1) ++end;
    const auto first = static_cast<unsigned>(files_[begin]);
    const auto last = static_cast<unsigned>(files_[end - 1]);
    if (end - begin == 1 || ::close_range(first, last, 0) != 0) {
      for (std::size_t i = begin; i < end; ++i) ::close(files_[i]);
    }
    return end;
  }

  std::vector<int> files_;
};

}  // namespace

std::optional<std::string> HostFiles::read(const std::string& path) const {
  std::optional<std::string> content;
  readAll(&path, &content, 1);
  return content;
}

std::optional<std::string> HostFiles::readTable(const std::string& path) const {
  OpenFiles files(1);
  const int file = files.open(root_ + path);
  return file < 0 ? std::nullopt : readToEnd(file, kMostTableBytes, End::kNothing);
}

void HostFiles::readAll(const std::string* paths, std::optional<std::string>* contents,
                        std::size_t count) const {
  OpenFiles files(count);
  for (std::size_t i = 0; i < count; ++i) {
    const int file = files.open(root_ + paths[i]);
    if (file >= 0) contents[i] = readToEnd(file, kMostBytes, End::kShortRead);
  }
}

std::optional<std::string> HostFiles::link(const std::string& path) const {
  char target[4096];
  const ssize_t length = ::readlink((root_ + path).c_str(), target, sizeof target);
  if (length < 0 || static_cast<std::size_t>(length) == sizeof target) return std::nullopt;
  return std::string(target, static_cast<std::size_t>(length));
}

std::vector<HostFiles::Entry> HostFiles::entries(const std::string& folder) const {
  std::vector<Entry> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir((root_ + folder).c_str()), ::closedir);
  if (open == nullptr) return found;
  while (found.size() < kMostEntries) {
    const dirent* entry = ::readdir(open.get());
    if (entry == nullptr) break;
    if (isDeviceName(entry->d_name)) found.push_back({entry->d_name, entry->d_ino});
  }
  return found;
}

bool HostFiles::exists(const std::string& path) const {
  return ::access((root_ + path).c_str(), F_OK) == 0;
}

std::optional<std::uint64_t> HostFiles::inode(const std::string& path) const {
  struct stat found {};
  if (::lstat((root_ + path).c_str(), &found) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(found.st_ino);
}

}  // namespace tavrenix::sys
