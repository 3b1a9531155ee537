// Dispatch queues: order, draining, and who may release what when.
#include "runtime/dispatch_queue.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <tavrenix/ob.h>

#include <algorithm>
#include <future>
#include <set>
#include <tavrenix/block.hpp>
#include <thread>
#include <vector>

#include "runtime/pool.hpp"
#include "runtime/string.hpp"

namespace {

TEST(DispatchQueue, RunsTasksInOrderOnOneThreadOfItsOwnEachWithAPool) {
  const auto queue = ob::make<ob::DispatchQueue>("order");
  const auto text = ob::String::make("kept");
  std::vector<int> seen;
  std::set<std::thread::id> threads{std::this_thread::get_id()};
  for (int i = 0; i < 100; ++i) {
    queue->async([&, i] {
      seen.push_back(i);
      threads.insert(std::this_thread::get_id());
      EXPECT_EQ(text->retainCount(), 1u) << "the pool before was drained";
      ob::Pool::keep(text);
      EXPECT_EQ(text->retainCount(), 2u);
    });
  }
  ASSERT_TRUE(queue->drain());
  EXPECT_EQ(seen.size(), 100u);
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
  EXPECT_EQ(threads.size(), 2u);
  EXPECT_EQ(text->retainCount(), 1u);
}

TEST(DispatchQueue, DrainCoversWhatWasQueuedBeforeItAndNotWhatTasksQueueLater) {
  const auto queue = ob::make<ob::DispatchQueue>("drain");
  std::atomic<bool> stopped{false};
  std::atomic<int> runs{0};
  std::function<void()> again = [&] {  // the queue is never empty while this goes on
    ++runs;
    if (!stopped) queue->async(again);
  };
  queue->async(again);
  EXPECT_TRUE(queue->drain());
  EXPECT_GE(runs, 1);
  stopped = true;
  EXPECT_TRUE(queue->drain());  // the task under way may have queued one more
  EXPECT_TRUE(queue->drain());
  const int last = runs;
  EXPECT_TRUE(queue->drain());
  EXPECT_EQ(runs, last);
}

TEST(DispatchQueue, DrainInATaskOfTheQueueReturnsFalseInsteadOfWaitingForItself) {
  const auto queue = ob::make<ob::DispatchQueue>("self");
  const auto other = ob::make<ob::DispatchQueue>("other");
  queue->async([&] {
    EXPECT_FALSE(queue->drain());
    EXPECT_TRUE(other->drain());
  });
  EXPECT_TRUE(queue->drain());
}

TEST(DispatchQueue, AReleasedQueueFinishesWhatIsQueued) {
  std::promise<void> mayRun;
  std::promise<int> last;
  {
    const auto queue = ob::make<ob::DispatchQueue>("released");
    queue->async([held = mayRun.get_future().share()] { held.wait(); });
    queue->async([&] { last.set_value(7); });
  }
  mayRun.set_value();
  EXPECT_EQ(last.get_future().get(), 7);
}

TEST(DispatchQueue, ATaskMayReleaseTheLastReferenceOfItsQueue) {
  std::promise<void> destroyed;
  const auto tell = [&](void*) { destroyed.set_value(); };
  auto queue = ob::make<ob::DispatchQueue>("last");
  auto* raw = queue.get();
  // The queue's only reference lives in its own task.
  raw->async([held = std::move(queue), atEnd = std::shared_ptr<void>(nullptr, tell)] {});
  destroyed.get_future().wait();
}

TEST(DispatchQueue, ItsThreadTakesNoSignals) {
  const auto blocks = [] {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, SIGTERM);
  };
  const auto queue = ob::make<ob::DispatchQueue>("signals");
  queue->async([&] { EXPECT_EQ(blocks(), 1); });
  queue->drain();
  EXPECT_EQ(blocks(), 0) << "the mask of the thread that made the queue changed";
}

TEST(DispatchQueueInC, RefusesWhatIsNoQueue) {
  int runs = 0;
  const auto count = [](void* context) { ++*static_cast<int*>(context); };
  EXPECT_FALSE(ObDispatchAsync(nullptr, count, &runs));
  EXPECT_FALSE(ObDispatchQueueDrain(nullptr));
  auto* wrong = static_cast<ObDispatchQueueRef>(static_cast<void*>(ObRunLoopGetCurrent()));
  EXPECT_FALSE(ObDispatchAsync(wrong, count, &runs));
  ObDispatchQueueRef queue = ObDispatchQueueCreate(nullptr);
  EXPECT_FALSE(ObDispatchAsync(queue, nullptr, nullptr));
  EXPECT_TRUE(ObDispatchAsync(queue, count, &runs));
  EXPECT_TRUE(ObDispatchQueueDrain(queue));
  EXPECT_EQ(runs, 1);
  ObRelease(queue);
}

struct SumBlock {
  int (*invoke)(SumBlock* block, int a, int b);
};

TEST(Block, ALambdaIsCalledThroughThePlainStructure) {
  int calls = 0;
  auto block = tavrenix::makeBlock<SumBlock>([&calls](int a, int b) { return ++calls * (a + b); });
  SumBlock* plain = &block;
  EXPECT_EQ(plain->invoke(plain, 2, 3), 5);
  EXPECT_EQ(plain->invoke(plain, 4, 5), 18);
}

}  // namespace
