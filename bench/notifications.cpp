#include "bench/notifications.hpp"

#include <benchmark/benchmark.h>
#include <tavrenix/mpio.h>

#include <atomic>
#include <deque>
#include <future>
#include <tavrenix/block.hpp>
#include <thread>

#include "bench/measured_host.hpp"
#include "host/registry_names.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix::bench {

namespace {

constexpr std::uint64_t kPaths = 100;  // of the one unit

// Counts the calls of clients.
class Calls {
 public:
  void count() noexcept {
    ++calls_;
    calls_.notify_one();
  }
  // Waits until `more` further calls have come, counted from those that it waited for before.
  void await(std::uint64_t more) noexcept {
    awaited_ += more;
    for (auto now = calls_.load(); now < awaited_; now = calls_.load()) calls_.wait(now);
  }

 private:
  std::atomic<std::uint64_t> calls_{0};
  std::uint64_t awaited_ = 0;
};

// A client with so many registrations on one queue.
class OnQueue {
 public:
  OnQueue(std::size_t registrations, Calls& calls) {
    for (std::size_t i = 0; i < registrations; ++i) {
      Callee& callee = callees_.emplace_back(Callee{calls});
      blocks_.emplace_back(callee);
      made_.push_back(MPIONotificationCreateWithDispatchQueue(&blocks_.back(), queue_, nullptr));
    }
  }
  ~OnQueue() {
    for (const MPIONotificationRef one : made_) MPIONotificationDestroy(one);
    ObDispatchQueueDrain(queue_);
    ObRelease(queue_);
  }
  OnQueue(const OnQueue&) = delete;
  OnQueue& operator=(const OnQueue&) = delete;

 private:
  struct Callee {
    Calls& calls;
    void operator()(ObStringRef, ObTypeRef, void*) const { calls.count(); }
  };
  ObDispatchQueueRef queue_ = ObDispatchQueueCreate("bench");
  std::deque<Callee> callees_;
  std::deque<Block<MPIONotificationBlock, Callee>> blocks_;
  std::vector<MPIONotificationRef> made_;
};

// A client with so many registrations on one run loop, which has a thread of its own.
class OnRunLoop {
 public:
  OnRunLoop(std::size_t registrations, Calls& calls) {
    std::promise<ObRunLoopRef> loop;
    auto running = loop.get_future();
    thread_ = std::thread([registrations, &calls, loop = std::move(loop)]() mutable {
      const ObRunLoopRef own = ObRunLoopGetCurrent();
      ObRetain(own);
      for (std::size_t i = 0; i < registrations; ++i) {
        ObRunLoopSourceRef source = MPIONotificationCreateRunLoopSource(called, &calls);
        ObRunLoopAddSource(own, source, kObRunLoopDefaultMode);
        ObRelease(source);  // the loop retains it until the thread ends
      }
      loop.set_value(own);
      ObRunLoopRun();
    });
    loop_ = running.get();
  }
  ~OnRunLoop() {
    ObRunLoopStop(loop_);
    thread_.join();
    ObRelease(loop_);
  }
  OnRunLoop(const OnRunLoop&) = delete;
  OnRunLoop& operator=(const OnRunLoop&) = delete;

 private:
  static void called(ObStringRef, ObTypeRef, void* calls) { static_cast<Calls*>(calls)->count(); }
  ObRunLoopRef loop_ = nullptr;
  std::thread thread_;
};

// Removes the first paths of the unit, or adds them again and changes the generation.
class Paths {
 public:
  explicit Paths(memory::MemoryHost& host) : host_(host) {
    for (std::uint64_t path = 0; path < kPaths; ++path) {
      ids_.push_back(test::pathID(0, path));
      properties_.push_back(host.registry().properties(ids_.back()));
    }
  }
  void go(std::uint64_t count) {
    for (std::uint64_t path = 0; path < count; ++path) host_.registry().removeEntry(ids_[path]);
  }
  void come(std::uint64_t count) {
    const memory::MemoryRegistry::HeldNotifications held(host_.registry());
    for (std::uint64_t path = 0; path < count; ++path) {
      host_.registry().addEntry(ids_[path], std::string(registry::kPathClass), {},
                                properties_[path]);
    }
    host_.registry().replaceParents(test::unitID(0), ids_);
    test::touch(host_);
  }

 private:
  memory::MemoryHost& host_;
  std::vector<EntryID> ids_;
  std::vector<ob::Ref<const ob::Dictionary>> properties_;
};

// Each iteration removes `count` paths, waits for the calls of all registrations, adds the paths
// again, and waits for these calls. An item is one call.
template <class Form>
void goAndCome(benchmark::State& state, std::uint64_t count) {
  const auto registrations = static_cast<std::uint64_t>(state.range(0));
  auto& host = hostWith(1, kPaths);
  Paths paths(host);
  Calls calls;
  const Form form(registrations, calls);
  calls.await(registrations * (1 + kPaths));  // for what is present at the start
  for (auto _ : state) {
    paths.go(count);
    calls.await(registrations * count);
    paths.come(count);
    calls.await(registrations * count);
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(2 * count * registrations));
}

void add(const char* name, void (*function)(benchmark::State&, std::uint64_t),
         std::uint64_t count) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { function(state, count); })
      ->Arg(1)
      ->Arg(10)
      ->Arg(100)
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace

void registerNotificationBenchmarks() {
  add("notify/queue/one_path", goAndCome<OnQueue>, 1);
  add("notify/queue/all_paths", goAndCome<OnQueue>, kPaths);
  add("notify/run_loop/one_path", goAndCome<OnRunLoop>, 1);
  add("notify/run_loop/all_paths", goAndCome<OnRunLoop>, kPaths);
}

}  // namespace tavrenix::bench
