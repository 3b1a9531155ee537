#include "runtime/run_loop.hpp"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include "runtime/pool.hpp"

namespace ob {

namespace {

using Clock = std::chrono::steady_clock;

// In seconds, about thirty years: longer than any run lasts, and too short to overflow the clock.
constexpr double kLongestRun = 1e9;

FileDescriptor makeDescriptor() {
  FileDescriptor descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!descriptor) throw std::system_error(errno, std::generic_category(), "eventfd");
  return descriptor;
}

Clock::time_point deadlineIn(double seconds) {
  if (!(seconds > 0)) return Clock::now();  // NaN too
  const std::chrono::duration<double> length(std::min(seconds, kLongestRun));
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(length);
}

// Waits until the descriptor is readable or the time has passed. May return early, for instance
// after a signal: the caller checks again anyway.
void waitReadable(int descriptor, Clock::duration longest) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
  const auto rest = std::chrono::nanoseconds(longest - seconds);
  const timespec limit{static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
  pollfd waited{descriptor, POLLIN, 0};
  ppoll(&waited, 1, &limit, nullptr);
}

}  // namespace

// The loop of one thread. The end of the thread takes the sources out of the loop; other owners may
// keep the loop itself.
struct RunLoop::OfThread {
  Ref<RunLoop> loop = Ref<RunLoop>::adopt(new RunLoop);
  OfThread() = default;
  OfThread(const OfThread&) = delete;
  OfThread& operator=(const OfThread&) = delete;
  ~OfThread() { loop->end(); }
};

RunLoop& RunLoop::current() {
  thread_local const OfThread ofThread;
  return *ofThread.loop;
}

RunLoop::RunLoop() : descriptor_(makeDescriptor()) {}

void RunLoop::wakeUp() noexcept {
  // Fails only if the counter is full, and then the descriptor is readable already.
  [[maybe_unused]] const int written = eventfd_write(descriptor(), 1);
}

void RunLoop::stop() noexcept {
  const auto self = Ref<RunLoop>::retain(this);  // the thread may end, with its loop, once stopped
  stopped_.store(true);
  wakeUp();
}

RunLoop::Result RunLoop::run(const String& mode, double seconds) {
  const auto deadline = deadlineIn(seconds);
  const Pass pass(*this);
  for (;;) {
    // Consume the wake first and then look for work: a later stop or signal wakes the loop again.
    eventfd_t wakes;
    eventfd_read(descriptor(), &wakes);
    if (stopped_.exchange(false)) return Result::kStopped;
    const auto sources = members(mode);
    if (sources.empty()) return Result::kFinished;
    performEach(sources, mode);
    const auto now = Clock::now();
    if (now >= deadline) return stopped_.exchange(false) ? Result::kStopped : Result::kTimedOut;
    waitReadable(descriptor(), deadline - now);
  }
}

bool RunLoop::performDue(const String& mode) {
  const Pass pass(*this);
  eventfd_t wakes;
  eventfd_read(descriptor(), &wakes);
  return performEach(members(mode), mode);
}

bool RunLoop::performEach(const std::vector<Ref<RunLoopSource>>& sources, const String& mode) {
  bool any = false;
  for (const auto& source : sources) {
    if (!source->takeSignal(*this, mode)) continue;
    const Pool pool;
    source->perform();
    any = true;
  }
  return any;
}

RunLoop::Pass::~Pass() {
  if (--loop.depth_ != 0 || loop.isAnythingDue()) loop.wakeUp();
}

bool RunLoop::isAnythingDue() const noexcept {
  const MutexLock lock(mutex_);
  return std::any_of(members_.begin(), members_.end(),
                     [](const Member& member) { return member.second->signalled_.load(); });
}

bool RunLoop::contains(const RunLoopSource& source, const String& mode) const {
  const MutexLock lock(mutex_);
  return std::any_of(members_.begin(), members_.end(), [&](const Member& member) {
    return member.second.get() == &source && member.first->equals(mode);
  });
}

std::vector<Ref<RunLoopSource>> RunLoop::members(const String& mode) const {
  std::vector<Ref<RunLoopSource>> found;
  const MutexLock lock(mutex_);
  for (const auto& [itsMode, source] : members_) {
    if (itsMode->equals(mode)) found.push_back(source);
  }
  return found;
}

bool RunLoop::enter(RunLoopSource& source, const String& mode) {
  const MutexLock lock(mutex_);
  if (ended_) return false;
  members_.emplace_back(Ref<const String>::retain(&mode), Ref<RunLoopSource>::retain(&source));
  wakeUp();  // the source may have been signalled before
  return true;
}

// Takes the source out of the loop. Returns the loop's reference to it, so that the caller can
// release it after the caller's own lock. Returns none if the source is not in the mode.
Ref<RunLoopSource> RunLoop::withdraw(const RunLoopSource& source, const String& mode) noexcept {
  const MutexLock lock(mutex_);
  const auto at = std::find_if(members_.begin(), members_.end(), [&](const Member& member) {
    return member.second.get() == &source && member.first->equals(mode);
  });
  if (at == members_.end()) return nullptr;
  Ref<RunLoopSource> withdrawn = std::move(at->second);
  members_.erase(at);
  wakeUp();  // a run of this mode ends if no source is left
  return withdrawn;
}

void RunLoop::end() {
  const Pool pool;
  std::vector<Member> left;
  {
    const MutexLock lock(mutex_);
    ended_ = true;
    left.swap(members_);
  }
  for (const auto& [mode, source] : left) source->leave(*this, *mode);
}

}  // namespace ob
