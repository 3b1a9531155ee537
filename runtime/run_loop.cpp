#include "runtime/run_loop.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include "runtime/pool.hpp"

namespace ob {

namespace {

using Clock = std::chrono::steady_clock;

// About thirty years: for longer than any run, and far from the ends of the clock.
constexpr double kLongestRun = 1e9;

int makeDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return descriptor;
}

Clock::time_point deadlineIn(double seconds) {
  if (!(seconds > 0)) return Clock::now();  // NaN too
  const std::chrono::duration<double> length(std::min(seconds, kLongestRun));
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(length);
}

// An interrupted wait is a short one: the caller looks again anyway.
void waitReadable(int descriptor, Clock::duration longest) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
  const auto rest = std::chrono::nanoseconds(longest - seconds);
  const timespec limit{static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
  pollfd waited{descriptor, POLLIN, 0};
  ppoll(&waited, 1, &limit, nullptr);
}

}  // namespace

// Ends the loop with its thread. The loop itself may live on in the hands of others.
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

RunLoop::~RunLoop() {
  close(descriptor_);
}

void RunLoop::wakeUp() noexcept {
  // Fails only where the counter is full, and then the descriptor is readable already.
  [[maybe_unused]] const int written = eventfd_write(descriptor_, 1);
}

void RunLoop::stop() noexcept {
  const auto self = Ref<RunLoop>::retain(this);  // its thread may end as soon as it is stopped
  stopped_.store(true);
  wakeUp();
}

RunLoop::Result RunLoop::run(const String& mode, double seconds) {
  const auto deadline = deadlineIn(seconds);
  const Pass pass(*this);
  for (;;) {
    // Before anything is looked at, so that a stop or a signal that comes later is not forgotten.
    eventfd_t wakes;
    eventfd_read(descriptor_, &wakes);
    if (stopped_.exchange(false)) return Result::kStopped;
    const auto sources = members(mode);
    if (sources.empty()) return Result::kFinished;
    performEach(sources, mode);
    const auto now = Clock::now();
    if (now >= deadline) return stopped_.exchange(false) ? Result::kStopped : Result::kTimedOut;
    waitReadable(descriptor_, deadline - now);
  }
}

bool RunLoop::performDue(const String& mode) {
  const Pass pass(*this);
  eventfd_t wakes;
  eventfd_read(descriptor_, &wakes);
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
  const std::lock_guard lock(mutex_);
  return std::any_of(members_.begin(), members_.end(),
                     [](const Member& member) { return member.second->signalled_.load(); });
}

bool RunLoop::contains(const RunLoopSource& source, const String& mode) const {
  const std::lock_guard lock(mutex_);
  return std::any_of(members_.begin(), members_.end(), [&](const Member& member) {
    return member.second.get() == &source && member.first->equals(mode);
  });
}

std::vector<Ref<RunLoopSource>> RunLoop::members(const String& mode) const {
  std::vector<Ref<RunLoopSource>> found;
  const std::lock_guard lock(mutex_);
  for (const auto& [itsMode, source] : members_) {
    if (itsMode->equals(mode)) found.push_back(source);
  }
  return found;
}

bool RunLoop::enter(RunLoopSource& source, const String& mode) {
  const std::lock_guard lock(mutex_);
  if (ended_) return false;
  members_.emplace_back(Ref<const String>::retain(&mode), Ref<RunLoopSource>::retain(&source));
  wakeUp();  // it may have been signalled before
  return true;
}

// Hands the loop's reference to the caller, who holds the source's lock and releases it afterwards.
Ref<RunLoopSource> RunLoop::withdraw(const RunLoopSource& source, const String& mode) noexcept {
  const std::lock_guard lock(mutex_);
  const auto at = std::find_if(members_.begin(), members_.end(), [&](const Member& member) {
    return member.second.get() == &source && member.first->equals(mode);
  });
  if (at == members_.end()) return nullptr;
  Ref<RunLoopSource> withdrawn = std::move(at->second);
  members_.erase(at);
  wakeUp();  // a run ends where no source is left
  return withdrawn;
}

void RunLoop::end() {
  const Pool pool;
  std::vector<Member> left;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    left.swap(members_);
  }
  for (const auto& [mode, source] : left) source->leave(*this, *mode);
}

}  // namespace ob
