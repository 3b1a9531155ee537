// What wakes a loop is not lost where another mode, or a run within a callback, looks first.
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <functional>
#include <thread>

#include "runtime/run_loop.hpp"

namespace {

class Source final : public ob::RunLoopSource {
 public:
  std::function<void()> onPerform = [] {};
  int performed = 0;

 protected:
  void perform() override {
    ++performed;
    onPerform();
  }
};

class RunLoopWakes : public testing::Test {
 protected:
  RunLoopWakes() {
    loop.add(*source, ob::kDefaultMode);
    loop.add(*elsewhere, *otherMode);
    loop.performDue(ob::kDefaultMode);
  }
  ~RunLoopWakes() override {
    source->invalidate();
    elsewhere->invalidate();
  }
  bool readable() const {
    pollfd waited{loop.descriptor(), POLLIN, 0};
    return poll(&waited, 1, 0) == 1;
  }
  ob::RunLoop& loop = ob::RunLoop::current();
  const ob::Ref<ob::String> otherMode = ob::String::make("Other");
  const ob::Ref<Source> source = ob::make<Source>();
  const ob::Ref<Source> elsewhere = ob::make<Source>();
};

TEST_F(RunLoopWakes, TheDescriptorStaysReadableWhileAnotherModeHasSomethingDue) {
  source->signal();
  EXPECT_FALSE(loop.performDue(*otherMode));
  EXPECT_TRUE(readable());
  EXPECT_TRUE(loop.performDue(ob::kDefaultMode));
  EXPECT_FALSE(readable());
}

TEST_F(RunLoopWakes, ACallbackThatLooksAtAnotherModeLeavesSignalAndStopToTheRunAroundIt) {
  source->onPerform = [this] {
    source->performed == 1 ? source->signal() : loop.stop();
    loop.performDue(*otherMode);
  };
  source->signal();
  EXPECT_EQ(loop.run(ob::kDefaultMode, 60), ob::RunLoop::Result::kStopped);
  EXPECT_EQ(source->performed, 2);
}

TEST_F(RunLoopWakes, ACallbackThatLooksAtAnotherModeLeavesTheEndToTheRunAroundIt) {
  source->onPerform = [this] {
    loop.remove(*source, ob::kDefaultMode);
    loop.performDue(*otherMode);
  };
  source->signal();
  EXPECT_EQ(loop.run(ob::kDefaultMode, 60), ob::RunLoop::Result::kFinished);
}

// A wake sends the run round; the stop comes while it is on its way.
TEST_F(RunLoopWakes, AStopThatComesRightAfterAWakeIsNotLost) {
  constexpr int kRounds = 20000;
  std::atomic<int> round{0};
  std::thread other([&] {
    for (int next = 1; next <= kRounds; ++next) {
      while (round.load() != next) std::this_thread::yield();
      loop.wakeUp();
      loop.stop();
    }
  });
  int stopped = 0;
  for (int next = 1; next <= kRounds; ++next) {
    round = next;
    if (loop.run(ob::kDefaultMode, ob::RunLoop::kForever) == ob::RunLoop::Result::kStopped)
      ++stopped;
  }
  other.join();
  EXPECT_EQ(stopped, kRounds);
}

}  // namespace
