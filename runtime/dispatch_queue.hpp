// A serial queue of tasks with a thread of its own.
//
// Ownership: the thread keeps what it needs, so a queue may be released while tasks wait. Releasing
// the last reference does not wait, also where a task of the queue does it: what is queued still
// runs, in order, and then the thread ends. Threads: every operation may be called on any thread,
// also from a task of the queue.
#pragma once

#include <functional>
#include <memory>

#include "runtime/object.hpp"

namespace ob {

class DispatchQueue final : public Object {
 public:
  static constexpr TypeID kType = kDispatchQueueType;
  // Runs, and is destroyed, on the queue's thread, inside a pool of its own. It must not throw.
  using Task = std::function<void()>;

  // label names the thread to debuggers, of which Linux shows 15 bytes. Throws std::system_error
  // where no thread can be started.
  explicit DispatchQueue(std::string_view label);
  ~DispatchQueue() override;

  void async(Task task);
  // Returns when everything queued before the call has run. On the queue itself that would never
  // be: there it returns false at once, without waiting.
  bool drain() const;

  TypeID typeID() const noexcept override { return kType; }

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace ob
