#include "runtime/dispatch_queue.hpp"

#include <pthread.h>

#include <deque>
#include <string>
#include <thread>

#include "runtime/mutex.hpp"
#include "runtime/pool.hpp"
#include "runtime/posix.hpp"

namespace ob {

struct DispatchQueue::State {
  Mutex mutex;
  Condition arrived;
  Condition finished;
  std::deque<Task> waiting OB_GUARDED_BY(mutex);
  std::uint64_t queuedCount OB_GUARDED_BY(mutex) = 0;
  std::uint64_t finishedCount OB_GUARDED_BY(mutex) = 0;
  bool closed OB_GUARDED_BY(mutex) = false;

  void run();
};

namespace {

// On the thread of a queue: the state of that queue. Null on any other thread.
thread_local const void* currentQueue = nullptr;

}  // namespace

void DispatchQueue::State::run() {
  currentQueue = this;
  MutexLock lock(mutex);
  for (;;) {
    while (waiting.empty() && !closed) arrived.wait(mutex);
    if (waiting.empty()) return;
    Task task = std::move(waiting.front());
    waiting.pop_front();
    lock.unlock();
    {
      const Pool pool;
      task();
      task = nullptr;
    }
    lock.lock();
    ++finishedCount;
    finished.notifyAll();
  }
}

DispatchQueue::DispatchQueue(std::string_view label) : state_(std::make_shared<State>()) {
  const AllSignalsBlocked blocked;
  std::thread([state = state_, name = std::string(label.substr(0, 15))] {
    pthread_setname_np(pthread_self(), name.c_str());
    state->run();
  }).detach();
}

DispatchQueue::~DispatchQueue() {
  const MutexLock lock(state_->mutex);
  state_->closed = true;
  state_->arrived.notifyOne();
}

void DispatchQueue::async(Task task) {
  const MutexLock lock(state_->mutex);
  state_->waiting.push_back(std::move(task));
  ++state_->queuedCount;
  state_->arrived.notifyOne();
}

bool DispatchQueue::drain() const {
  if (currentQueue == state_.get()) return false;
  const MutexLock lock(state_->mutex);
  const std::uint64_t queuedBefore = state_->queuedCount;
  while (state_->finishedCount < queuedBefore) state_->finished.wait(state_->mutex);
  return true;
}

}  // namespace ob
