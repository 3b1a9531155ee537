#include "maintain/stop_signals.hpp"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "monitor/failure.hpp"

namespace tavrenix::maintain {

StopSignals::StopSignals() {
  sigset_t stops;
  sigemptyset(&stops);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stops, signal);
  descriptor_ = ::signalfd(-1, &stops, SFD_CLOEXEC | SFD_NONBLOCK);
  sigaddset(&stops, SIGPIPE);
  if (descriptor_ < 0 || ::pthread_sigmask(SIG_BLOCK, &stops, nullptr) != 0) {
    throw monitor::Failure(std::string("signals cannot be awaited: ") + std::strerror(errno));
  }
}

StopSignals::~StopSignals() {
  ::close(descriptor_);
}

bool StopSignals::hasCome() {
  pollfd waited{descriptor_, POLLIN, 0};
  hasCome_ = hasCome_ || ::poll(&waited, 1, 0) > 0;
  return hasCome_;
}

void StopSignals::sleep(int milliseconds) {
  pollfd waited{descriptor_, POLLIN, 0};
  // A signal that is known of must not cut the waits of what is put back.
  const nfds_t count = hasCome_ ? 0 : 1;
  ::poll(&waited, count, milliseconds);
}

bool StopSignals::awaitReadable(int descriptor) {
  pollfd waited[] = {{descriptor_, POLLIN, 0}, {descriptor, POLLIN, 0}};
  while (::poll(waited, 2, -1) < 0 && errno == EINTR) {
  }
  return waited[0].revents == 0;
}

}  // namespace tavrenix::maintain
