// The membership of sources in loops. Source and loop keep one list each. The source's list
// decides; the loop's list is changed along with it, under the source's lock.
#include <algorithm>

#include "runtime/run_loop.hpp"

namespace ob {

RunLoopSource::Memberships::iterator RunLoopSource::membership(const RunLoop& loop,
                                                               const String& mode) {
  return std::find_if(memberships_.begin(), memberships_.end(), [&](const Membership& one) {
    return one.loop.get() == &loop && one.mode->equals(mode);
  });
}

bool RunLoopSource::join(RunLoop& loop, const String& mode) {
  const auto self = Ref<RunLoopSource>::retain(this);
  {
    const MutexLock lock(mutex_);
    if (!valid_) return false;
    if (membership(loop, mode) != memberships_.end()) return true;
    memberships_.reserve(memberships_.size() + 1);
    if (!loop.enter(*this, mode)) return false;
    memberships_.push_back({Ref<RunLoop>::retain(&loop), Ref<const String>::retain(&mode)});
  }
  schedule(loop, mode);
  return true;
}

bool RunLoopSource::leave(RunLoop& loop, const String& mode) {
  // Both are released at the end: they may be the last references to the source and to the loop.
  Ref<RunLoopSource> self;
  Membership left;
  {
    const MutexLock lock(mutex_);
    const auto at = membership(loop, mode);
    if (at == memberships_.end()) return false;
    left = std::move(*at);
    memberships_.erase(at);
    self = loop.withdraw(*this, mode);
  }
  cancel(*left.loop, *left.mode);
  return true;
}

void RunLoopSource::invalidate() {
  const auto self = Ref<RunLoopSource>::retain(this);
  Memberships left;
  {
    const MutexLock lock(mutex_);
    valid_ = false;
    left.swap(memberships_);
    for (const auto& [loop, mode] : left) loop->withdraw(*this, *mode);
  }
  for (const auto& [loop, mode] : left) cancel(*loop, *mode);
}

bool RunLoopSource::isValid() const {
  const MutexLock lock(mutex_);
  return valid_;
}

void RunLoopSource::signal() {
  const MutexLock lock(mutex_);
  signalled_.store(true);
  for (const auto& [loop, mode] : memberships_) loop->wakeUp();
}

bool RunLoopSource::takeSignal(const RunLoop& loop, const String& mode) {
  if (!signalled_.load()) return false;
  const MutexLock lock(mutex_);
  return membership(loop, mode) != memberships_.end() && signalled_.exchange(false);
}

}  // namespace ob
