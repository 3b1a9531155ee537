// What carries a backing's notifications to a dispatch queue or a run loop. Every backing of the
// registry uses it for its ports.
//
// Threads: any operation on any thread. None of them calls a delivery or the backing, so the
// backing may hold locks of its own.
#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "runtime/dispatch_queue.hpp"
#include "runtime/run_loop.hpp"

namespace tavrenix {

class NotificationPort final : public ob::Object {
 public:
  using Delivery = std::function<void()>;

  void setDispatchQueue(ob::DispatchQueue& queue);
  // The port's own source, made when first asked for. None once the port is destroyed.
  ob::Ref<ob::RunLoopSource> runLoopSource();
  // Has deliver called once: a task of the queue, or when the source is performed. Until the port
  // is bound it waits; once it is destroyed nothing happens.
  void post(Delivery deliver);
  // Drops what waits, the queue and the source. The owner calls it before it lets go of the port.
  void destroy();
  bool isDestroyed() const;

  ob::TypeID typeID() const noexcept override { return ob::kNoType; }

 private:
  class Source;
  // mutex_ is held.
  void queueTask();
  // False where nothing waited.
  bool deliverNext();

  mutable std::mutex mutex_;
  bool destroyed_ = false;
  std::deque<Delivery> waiting_;
  ob::Ref<ob::DispatchQueue> queue_;
  ob::Ref<ob::RunLoopSource> source_;
};

}  // namespace tavrenix
