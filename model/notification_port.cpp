#include "model/notification_port.hpp"

#include <utility>

namespace tavrenix {

using Lock = std::lock_guard<std::mutex>;

// It holds the port, and the port holds it until the port is destroyed.
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
  for (std::size_t i = 0; i < waiting_.size(); ++i) queueTask();
}

ob::Ref<ob::RunLoopSource> NotificationPort::runLoopSource() {
  const Lock lock(mutex_);
  if (destroyed_) return nullptr;
  if (!source_) {
    source_ = ob::make<Source>(*this);
    if (!waiting_.empty()) source_->signal();
  }
  return source_;
}

void NotificationPort::queueTask() {
  queue_->async([port = ob::Ref<NotificationPort>::retain(this)] { port->deliverNext(); });
}

void NotificationPort::post(Delivery deliver) {
  const Lock lock(mutex_);
  if (destroyed_) return;
  waiting_.push_back(std::move(deliver));
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
    if (waiting_.empty()) return false;
    next = std::move(waiting_.front());
    waiting_.pop_front();
  }
  next();
  return true;
}

void NotificationPort::destroy() {
  // Let go of after the lock: each may hold the last reference to something.
  std::deque<Delivery> dropped;
  ob::Ref<ob::DispatchQueue> queue;
  ob::Ref<ob::RunLoopSource> source;
  const Lock lock(mutex_);
  destroyed_ = true;
  dropped.swap(waiting_);
  std::swap(queue, queue_);
  std::swap(source, source_);
}

bool NotificationPort::isDestroyed() const {
  const Lock lock(mutex_);
  return destroyed_;
}

}  // namespace tavrenix
