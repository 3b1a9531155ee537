#include "host/notification_port.hpp"

#include <utility>

namespace tavrenix {

using Lock = ob::MutexLock;

// A source that makes the deliveries of a port. Source and port retain each other until the port is
// destroyed.
class NotificationPort::Source final : public ob::RunLoopSource {
 public:
  explicit Source(NotificationPort& port) noexcept
      : port_(ob::Ref<NotificationPort>::retain(&port)) {}

 protected:
  void perform() override {
    while (port_->deliverNext()) {
    }
  }

 private:
  const ob::Ref<NotificationPort> port_;
};

void NotificationPort::setDispatchQueue(ob::DispatchQueue& queue) {
  const Lock lock(mutex_);
  if (destroyed_) return;
  queue_ = ob::Ref<ob::DispatchQueue>::retain(&queue);
  for (std::size_t i = 0; i < queued_.size(); ++i) queueTask();
}

ob::Ref<ob::RunLoopSource> NotificationPort::runLoopSource() {
  const Lock lock(mutex_);
  if (destroyed_) return nullptr;
  if (!source_) {
    source_ = ob::make<Source>(*this);
    if (!queued_.empty()) source_->signal();
  }
  return source_;
}

void NotificationPort::queueTask() {
  queue_->async([port = ob::Ref<NotificationPort>::retain(this)] { port->deliverNext(); });
}

void NotificationPort::post(Delivery deliver) {
  const Lock lock(mutex_);
  if (destroyed_) return;
  queued_.push_back(std::move(deliver));
  if (queue_) {
    queueTask();
  } else if (source_) {
    source_->signal();
  }
}

bool NotificationPort::deliverNext() {
  Delivery next;
  {
    const Lock lock(mutex_);
    if (queued_.empty()) return false;
    next = std::move(queued_.front());
    queued_.pop_front();
  }
  next();
  return true;
}

void NotificationPort::destroy() {
  // Released after the lock: each may hold the last reference to something.
  std::deque<Delivery> dropped;
  ob::Ref<ob::DispatchQueue> queue;
  ob::Ref<ob::RunLoopSource> source;
  const Lock lock(mutex_);
  destroyed_ = true;
  dropped.swap(queued_);
  std::swap(queue, queue_);
  std::swap(source, source_);
}

bool NotificationPort::isDestroyed() {
  const Lock lock(mutex_);
  return destroyed_;
}

}  // namespace tavrenix
