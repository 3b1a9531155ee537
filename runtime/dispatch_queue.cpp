#include "runtime/dispatch_queue.hpp"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "runtime/pool.hpp"
#include "runtime/signals.hpp"

namespace ob {

struct DispatchQueue::State {
  mutable std::mutex mutex;
  std::condition_variable arrived;
  mutable std::condition_variable finished;
  std::deque<Task> waiting;
  std::uint64_t queuedCount = 0;
  std::uint64_t finishedCount = 0;
  bool closed = false;

  void run();
};

namespace {

// The state of the queue whose thread this is; null on every other thread.
thread_local const void* currentQueue = nullptr;

}  // namespace

void DispatchQueue::State::run() {
  currentQueue = this;
  std::unique_lock lock(mutex);
  for (;;) {
    arrived.wait(lock, [this] { return closed || !waiting.empty(); });
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
    finished.notify_all();
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
  const std::lock_guard lock(state_->mutex);
  state_->closed = true;
  state_->arrived.notify_one();
}

void DispatchQueue::async(Task task) {
  const std::lock_guard lock(state_->mutex);
  state_->waiting.push_back(std::move(task));
  ++state_->queuedCount;
  state_->arrived.notify_one();
}

bool DispatchQueue::drain() const {
  if (currentQueue == state_.get()) return false;
  std::unique_lock lock(state_->mutex);
  const std::uint64_t queuedBefore = state_->queuedCount;
  state_->finished.wait(lock, [&] { return state_->finishedCount >= queuedBefore; });
  return true;
}

}  // namespace ob
