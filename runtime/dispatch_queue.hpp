// A serial queue of tasks with a thread of its own.
//
// Ownership: a queue may be released while tasks wait, also by one of its tasks. The release does
// not wait: the queued tasks still run, in order, and then the thread ends.
// Thread safety: every operation may be called on any thread, also by a task of the queue.
#pragma once

#include <functional>
#include <memory>

#include "runtime/object.hpp"

namespace ob {

class DispatchQueue final : public Object {
 public:
  static constexpr TypeID kType = kDispatchQueueType;
  // The queue's thread runs and destroys each task inside a pool of its own. A task must not throw.
  using Task = std::function<void()>;

  // The label names the thread to debuggers; Linux shows its first 15 bytes.
  // Errors: throws std::system_error if no thread can be started.
  explicit DispatchQueue(std::string_view label);
  ~DispatchQueue() override;

  // Queues the task.
  void async(Task task);
  // Waits until every task that was queued before the call has run. Returns false at once in a task
  // of this queue, which would wait for itself.
  bool drain() const;

  TypeID typeID() const noexcept override { return kType; }

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace ob
