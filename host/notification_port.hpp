// A notification port: makes the deliveries of its registrations on the dispatch queue, or in the
// run loop, that it is bound to.
//
// Thread safety: every function may be called on any thread. None of them makes a delivery, so
// callers may hold locks.
#pragma once

#include <deque>
#include <functional>

#include "runtime/dispatch_queue.hpp"
#include "runtime/mutex.hpp"
#include "runtime/run_loop.hpp"

namespace tavrenix {

class NotificationPort final : public ob::Object {
 public:
  using Delivery = std::function<void()>;

  void setDispatchQueue(ob::DispatchQueue& queue);
  // Returns the port's source, which is made at the first call. Returns null if the port has been
  // destroyed.
  ob::Ref<ob::RunLoopSource> runLoopSource();
  // Queues a delivery. A task of the queue, or the source when it is performed, makes it once. It
  // waits until the port is bound. Does nothing if the port has been destroyed.
  void post(Delivery deliver);
  // Drops the queued deliveries, the queue and the source. REQUIRES: the owner calls this before it
  // drops its reference: the source and the port refer to each other.
  void destroy();
  bool isDestroyed();

  ob::TypeID typeID() const noexcept override { return ob::kNoType; }

 private:
  class Source;
  void queueTask() OB_REQUIRES(mutex_);
  // Makes one delivery. Returns false if none was queued.
  bool deliverNext() OB_EXCLUDES(mutex_);

  ob::Mutex mutex_;
  bool destroyed_ OB_GUARDED_BY(mutex_) = false;
  std::deque<Delivery> queued_ OB_GUARDED_BY(mutex_);
  ob::Ref<ob::DispatchQueue> queue_ OB_GUARDED_BY(mutex_);
  ob::Ref<ob::RunLoopSource> source_ OB_GUARDED_BY(mutex_);
};

}  // namespace tavrenix
