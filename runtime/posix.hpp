// Objects that undo at the end of their scope what they did with the operating system: a file
// descriptor is closed, and a thread's signal mask is restored.
#pragma once

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ob {

// An owned file descriptor, or -1 for none.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  // Ownership: takes over the descriptor. A negative number, the result of a failed call, is none.
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  // Leaves errno alone, so that a failed call can be reported after its descriptor is closed.
  ~FileDescriptor();

  explicit operator bool() const noexcept { return descriptor_ >= 0; }
  // Returns the descriptor, still owned by this object.
  int get() const noexcept { return descriptor_; }
  // Returns the descriptor and leaves its closing to the caller.
  [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_ = -1;
};

inline FileDescriptor::~FileDescriptor() {
  if (descriptor_ < 0) return;
  const int before = errno;
  ::close(descriptor_);
  errno = before;
}

// Blocks every signal for the calling thread until the end of the scope. A thread that is started
// meanwhile inherits the mask and never takes a signal: the client's threads are to take them.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() noexcept {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace ob
