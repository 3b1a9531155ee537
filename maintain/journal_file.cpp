#include "maintain/journal_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "maintain/journal_json.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;

constexpr mode_t kOwnerAlone = 0600;

[[noreturn]] void refuse(const std::string& file, const char* what) {
  throw Failure(monitor::visible(file) + ": " + what + ": " + std::strerror(errno));
}

std::string folderOf(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : file.substr(0, slash);
}

// Makes a rename in the file's folder last.
void syncFolderOf(const std::string& file) {
  const int folder = ::open(folderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool isSynced = folder >= 0 && ::fsync(folder) == 0;
  const int error = errno;
  if (folder >= 0) ::close(folder);
  errno = error;
  if (!isSynced) refuse(folderOf(file), "cannot be written to disk");
}

std::string lockFileOf(const std::string& journal) {
  return journal + ".lock";
}

// Takes the lock (F_OFD_SETLK), or finds out whether another process has it (F_OFD_GETLK). It
// belongs to the open file, so that neither a child nor another open of the file in this process
// drops it. Returns true if no other process has the lock.
bool lock(int descriptor, int command) {
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return ::fcntl(descriptor, command, &whole) == 0 &&
         (command == F_OFD_SETLK || whole.l_type == F_UNLCK);
}

std::string holderIn(int descriptor) {
  char line[256];
  const ssize_t count = ::pread(descriptor, line, sizeof line, 0);
  const std::string text(line, count < 0 ? 0 : static_cast<std::size_t>(count));
  return monitor::visible(text.substr(0, text.find('\n')));
}

}  // namespace

std::optional<Journal> readJournal(const std::string& file) {
  if (::access(file.c_str(), F_OK) != 0 && errno == ENOENT) return std::nullopt;
  const std::string content = monitor::readFile(file);
  try {
    return journalIn(content);
  } catch (const std::exception& error) {
    throw Failure(
        monitor::visible(file) +
        ": not a journal of a maintenance: " + monitor::visible(error.what()) +
        "; paths may still be out, which tavrenix-monitor shows; move it away to begin anew");
  }
}

void writeJournal(const std::string& file, const Journal& journal) {
  monitor::replaceFile(file, monitor::textOf(documentOf(journal), false), kOwnerAlone);
  syncFolderOf(file);
}

void setJournalAside(const std::string& file) {
  if (::rename(file.c_str(), (file + ".1").c_str()) != 0) refuse(file, "cannot be set aside");
}

JournalLock::JournalLock(const std::string& journal, const std::string& holder) {
  const std::string file = lockFileOf(journal);
  constexpr mode_t kFolderMode = 0755;
  ::mkdir(folderOf(journal).c_str(), kFolderMode);  // if it fails, the file cannot be opened
  descriptor_ = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnerAlone);
  if (descriptor_ < 0) refuse(file, "cannot be opened");
  if (!lock(descriptor_, F_OFD_SETLK)) {
    const std::string other = holderIn(descriptor_);
    ::close(descriptor_);
    throw Failure("another run is at work: " + other);
  }
  // The line is for runs that are refused: a full disk keeps none from bringing paths back.
  const std::string line = holder + '\n';
  [[maybe_unused]] const ssize_t count = ::pwrite(descriptor_, line.data(), line.size(), 0);
}

JournalLock::~JournalLock() {
  ::close(descriptor_);
}

std::optional<std::string> lockHolder(const std::string& journal) {
  const int file = ::open(lockFileOf(journal).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return std::nullopt;
  std::optional<std::string> holder;
  if (!lock(file, F_OFD_GETLK)) holder = holderIn(file);
  ::close(file);
  return holder;
}

}  // namespace tavrenix::maintain
