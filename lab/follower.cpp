#include "lab/follower.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <system_error>

#include "lab/image/image_file.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

// An editor that saves makes several changes to a file. They count as one: it is over if nothing
// happens for kPauseMilliseconds, and at the latest after kMostPauses further changes.
constexpr int kPauseMilliseconds = 20;
constexpr int kMostPauses = 10;

int checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

bool isReadable(int descriptor, int milliseconds) {
  pollfd waited{descriptor, POLLIN, 0};
  return ::poll(&waited, 1, milliseconds) > 0;
}

// Returns a watch on the file. The follower makes it before it reads the file, so that it misses no
// change between the two. Errors: throws ImageError, which names the file.
FileWatch watchOn(const std::string& path) {
  try {
    return FileWatch(resolved(path));
  } catch (const std::system_error& error) {
    throw ImageError(ob::escaped(path, 1024) + ": " + error.what());
  }
}

}  // namespace

// Watches the folder, because a watch on the file itself would not see another file take its place.
FileWatch::FileWatch(const std::string& path)
    : name_(std::filesystem::path(path).filename()),
      events_(checked(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "cannot be watched for changes")),
      stopped_(checked(::eventfd(0, EFD_CLOEXEC), "cannot be watched for changes")) {
  const std::string folder = std::filesystem::path(path).parent_path();
  constexpr std::uint32_t kChanges =
      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;
  checked(::inotify_add_watch(events_.get(), folder.c_str(), kChanges),
          "cannot be watched for changes");
}

bool FileWatch::readEvents() {
  bool changed = false;
  alignas(inotify_event) char buffer[4096];
  for (;;) {
    const ssize_t length = ::read(events_.get(), buffer, sizeof buffer);
    if (length <= 0) return changed;
    for (const char* at = buffer; at < buffer + length;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      // After an overflow anything may have happened.
      if ((event.mask & IN_Q_OVERFLOW) != 0) changed = true;
      if (event.len != 0 && name_ == at + sizeof event) changed = true;
      at += sizeof event + event.len;
    }
  }
}

bool FileWatch::wait() {
  for (;;) {
    pollfd waited[] = {{events_.get(), POLLIN, 0}, {stopped_.get(), POLLIN, 0}};
    ::poll(waited, 2, -1);
    if (waited[1].revents != 0) return false;
    if (!readEvents()) continue;
    for (int i = 0; i < kMostPauses && isReadable(events_.get(), kPauseMilliseconds); ++i) {
      readEvents();
    }
    return true;
  }
}

void FileWatch::stop() noexcept {
  ::eventfd_write(stopped_.get(), 1);
}

Follower::Follower(SimulatedHost& host, const std::string& path, SimulatedHost::Report report)
    : host_(host), report_(std::move(report)), watch_(watchOn(path)) {
  for (const std::string& warning : host_.load(path)) report_(warning);
  const ob::AllSignalsBlocked blocked;
  thread_ = std::thread([this] { follow(); });
}

Follower::~Follower() {
  watch_.stop();
  thread_.join();
}

void Follower::follow() {
  std::string reported;
  while (watch_.wait()) {
    try {
      host_.reload();
      reported.clear();
    } catch (const std::exception& error) {
      if (reported != error.what()) report_(error.what());
      reported = error.what();
    }
  }
}

}  // namespace tavrenix::lab
