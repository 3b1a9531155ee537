#include "lab/file_watch.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace tavrenix::lab {

namespace {

// An editor makes several changes when it saves: they count as one that is over when the file has
// been left alone for so long, but is not waited for longer than so many of these.
constexpr int kQuietMilliseconds = 20;
constexpr int kLongestWait = 10;

int checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

bool isReadable(int descriptor, int milliseconds) {
  pollfd waited{descriptor, POLLIN, 0};
  return ::poll(&waited, 1, milliseconds) > 0;
}

}  // namespace

// The folder is watched: a file that is replaced is another one under the same name.
FileWatch::FileWatch(const std::string& path)
    : name_(std::filesystem::path(path).filename()),
      events_(checked(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "cannot be watched")),
      stopped_(checked(::eventfd(0, EFD_CLOEXEC), "cannot be watched")) {
  const std::string folder = std::filesystem::path(path).parent_path();
  constexpr std::uint32_t kChanges =
      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;
  checked(::inotify_add_watch(events_.descriptor(), folder.c_str(), kChanges), "cannot be watched");
}

bool FileWatch::readEvents() {
  bool changed = false;
  alignas(inotify_event) char buffer[4096];
  for (;;) {
    const ssize_t length = ::read(events_.descriptor(), buffer, sizeof buffer);
    if (length <= 0) return changed;
    for (const char* at = buffer; at < buffer + length;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      // Where the kernel could not keep up, anything may have happened.
      if ((event.mask & IN_Q_OVERFLOW) != 0) changed = true;
      if (event.len != 0 && name_ == at + sizeof event) changed = true;
      at += sizeof event + event.len;
    }
  }
}

bool FileWatch::wait() {
  for (;;) {
    pollfd waited[] = {{events_.descriptor(), POLLIN, 0}, {stopped_.descriptor(), POLLIN, 0}};
    ::poll(waited, 2, -1);
    if (waited[1].revents != 0) return false;
    if (!readEvents()) continue;
    for (int i = 0; i < kLongestWait && isReadable(events_.descriptor(), kQuietMilliseconds); ++i) {
      readEvents();
    }
    return true;
  }
}

void FileWatch::stop() noexcept {
  ::eventfd_write(stopped_.descriptor(), 1);
}

}  // namespace tavrenix::lab
