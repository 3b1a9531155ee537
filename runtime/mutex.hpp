// Mutexes whose use clang checks at compile time (-Wthread-safety). A field says which mutex guards
// it, a function says which mutex its caller must hold:
//
//   int count_ OB_GUARDED_BY(mutex_);
//   void grow() OB_REQUIRES(mutex_);
//
// clang.llvm.org/docs/ThreadSafetyAnalysis.html explains each annotation. g++ ignores them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define OB_THREAD_ANNOTATION(...) __attribute__((__VA_ARGS__))
#else
#define OB_THREAD_ANNOTATION(...)
#endif
#define OB_GUARDED_BY(...) OB_THREAD_ANNOTATION(guarded_by(__VA_ARGS__))
#define OB_ACQUIRED_BEFORE(...) OB_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define OB_REQUIRES(...) OB_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define OB_EXCLUDES(...) OB_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define OB_ACQUIRE(...) OB_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define OB_TRY_ACQUIRE(...) OB_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define OB_RELEASE(...) OB_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
// For a function that the analysis cannot follow. Its comment says why it is right all the same.
#define OB_NO_THREAD_ANALYSIS OB_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace ob {

class OB_THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  constexpr Mutex() noexcept = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  void lock() OB_ACQUIRE() { mutex_.lock(); }
  void unlock() OB_RELEASE() { mutex_.unlock(); }
  // Locks the mutex unless it is locked. Returns true if it did.
  bool tryLock() OB_TRY_ACQUIRE(true) { return mutex_.try_lock(); }

 private:
  friend class Condition;
  std::mutex mutex_;
};

// Holds a mutex until the end of its scope. unlock() and lock() may interrupt that.
class OB_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) OB_ACQUIRE(mutex) : lock_(mutex) {}
  ~MutexLock() OB_RELEASE() {}
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;
  void unlock() OB_RELEASE() { lock_.unlock(); }
  void lock() OB_ACQUIRE() { lock_.lock(); }

 private:
  std::unique_lock<Mutex> lock_;
};

// A condition variable. A wait may end without cause, so it is called in a loop that checks the
// awaited condition. The loop is written in the function that holds the lock, because the analysis
// does not follow the lock into a lambda.
class Condition {
 public:
  void wait(Mutex& mutex) OB_REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock);
    lock.release();
  }
  // Returns false if the deadline has passed.
  bool waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) OB_REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    const auto status = condition_.wait_until(lock, deadline);
    lock.release();
    return status == std::cv_status::no_timeout;
  }
  void notifyOne() noexcept { condition_.notify_one(); }
  void notifyAll() noexcept { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace ob
