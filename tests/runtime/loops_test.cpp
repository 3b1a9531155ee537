// Pools, dispatch queues and run loops.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <tavrenix/ob.h>

#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include "runtime/c/c_bridge.hpp"
#include "runtime/dispatch_queue.hpp"
#include "runtime/pool.hpp"

namespace {

const ObStringRef kDefault = kObRunLoopDefaultMode;
OB_CONSTANT_STRING(kOtherMode, "Other");
const ObStringRef kOther = ob::toC<ObStringRef>(&kOtherMode);

TEST(Pools, KeepUntilDrainedAlsoOutOfOrderAndUntilTheEndOfTheThread) {
  const auto kept = ob::String::make("kept");
  std::thread([&] {
    auto outer = std::make_unique<ob::Pool>();
    ob::Pool::keep(kept);
    auto* inner = ObPoolCreate();
    outer.reset();
    EXPECT_EQ(kept->retainCount(), 1u);
    ob::Pool::keep(kept);
    ObPoolDrain(inner);
    EXPECT_EQ(kept->retainCount(), 1u);
    ob::Pool::keep(kept);
    EXPECT_EQ(kept->retainCount(), 2u);
  }).join();
  EXPECT_EQ(kept->retainCount(), 1u);
}

TEST(DispatchQueue, RunsItsTasksInOrderWithoutSignalsAndOutlivesItsRelease) {
  std::promise<void> mayRun, finished;
  std::vector<int> seen;
  auto queue = ob::make<ob::DispatchQueue>("queue");
  auto* const raw = queue.get();
  raw->async([held = mayRun.get_future().share()] { held.wait(); });
  raw->async([&] {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 1);
    EXPECT_FALSE(raw->drain()) << "a task would wait for itself";
    seen.push_back(1);
  });
  raw->async([held = std::move(queue)] {});  // the last reference
  raw->async([&] {
    seen.push_back(2);
    finished.set_value();
  });
  mayRun.set_value();
  finished.get_future().wait();
  EXPECT_EQ(seen, (std::vector{1, 2}));
}

// A source that notes what the loop calls.
struct Source {
  int references = 0;
  int performed = 0;
  std::mutex mutex;
  std::string modes;  // "+Mode " for each schedule, "-Mode " for each cancel
  std::function<void()> onPerform = [] {};
  ObRunLoopSourceRef source = nullptr;

  explicit Source(ObStringRef mode = nullptr) {
    const ObRunLoopSourceContext context{
        this,
        [](void* info) { ++of(info).references; },
        [](void* info) { --of(info).references; },
        [](void* info, ObRunLoopRef, ObStringRef itsMode) { of(info).note("+", itsMode); },
        [](void* info, ObRunLoopRef, ObStringRef itsMode) { of(info).note("-", itsMode); },
        [](void* info) {
          ++of(info).performed;
          of(info).onPerform();
        }};
    source = ObRunLoopSourceCreate(&context);
    if (mode != nullptr) add(mode);
  }
  ~Source() {
    ObRunLoopSourceInvalidate(source);
    ObRelease(source);
    EXPECT_EQ(references, 0);
  }
  bool add(ObStringRef mode) { return ObRunLoopAddSource(ObRunLoopGetCurrent(), source, mode); }
  void signal() { ObRunLoopSourceSignal(source); }
  // One thread may schedule while another cancels.
  void note(const char* sign, ObStringRef mode) {
    const std::lock_guard lock(mutex);
    modes += sign + std::string(ObStringGetUTF8(mode));
  }
  static Source& of(void* info) { return *static_cast<Source*>(info); }
};

bool readable() {
  pollfd waited{ObRunLoopGetDescriptor(ObRunLoopGetCurrent()), POLLIN, 0};
  return poll(&waited, 1, 0) == 1;
}

TEST(RunLoop, SchedulesAndCancelsWithinTheCallAndHoldsItsSources) {
  Source source(kOther);
  EXPECT_TRUE(source.add(kOther)) << "a second time is no failure";
  EXPECT_FALSE(source.add(nullptr));
  const ObRunLoopSourceRef raw = source.source;
  ObRelease(std::exchange(source.source, nullptr));
  EXPECT_EQ(source.references, 1) << "held by the loop";
  ObRunLoopSourceInvalidate(raw);
  EXPECT_EQ(source.modes, "+Other-Other");
  Source second;
  std::thread([&] { second.add(kOther); }).join();
  EXPECT_EQ(second.modes, "+Other-Other") << "the end of the thread cancelled it";
  ObRunLoopSourceInvalidate(second.source);
  EXPECT_FALSE(second.add(kDefault));
}

TEST(RunLoop, PerformsSignalledSourcesOfItsModeOnce) {
  Source source, other(kOther), removed;
  source.signal();  // before the add
  source.add(kDefault);
  removed.add(kDefault);
  other.signal();
  source.onPerform = [&] { ObRunLoopSourceInvalidate(removed.source); };
  removed.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut);
  EXPECT_EQ(source.performed, 1);
  EXPECT_EQ(other.performed + removed.performed, 0);
  source.onPerform = [&] {
    if (source.performed == 2) source.signal();
  };
  source.signal();
  source.signal();
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault)) << "signalled while performing";
  EXPECT_TRUE(!ObRunLoopPerformDue(kDefault) && readable()) << "a source of another mode is due";
  EXPECT_TRUE(ObRunLoopPerformDue(kOther));
  EXPECT_FALSE(ObRunLoopPerformDue(kDefault) || readable());
}

TEST(RunLoop, EndsTheInnermostRunThatIsStoppedOrHasNoSourceLeft) {
  EXPECT_EQ(ObRunLoopRunInMode(kOther, 60), kObRunLoopFinished);
  Source source(kDefault);
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  ObRunLoopResult inner{};
  source.onPerform = [&] {
    std::thread([&] { ObRunLoopStop(loop); }).join();
    inner = ObRunLoopRunInMode(kDefault, 60);
    ObRunLoopStop(loop);
  };
  source.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 60), kObRunLoopStopped);
  EXPECT_EQ(inner, kObRunLoopStopped);
  Source late;
  late.onPerform = [&] {
    ObRunLoopSourceInvalidate(source.source);
    ObRunLoopSourceInvalidate(late.source);
  };
  std::promise<void> running;
  source.onPerform = [&] { running.set_value(); };
  source.signal();
  std::thread adder([&] {
    running.get_future().wait();
    late.signal();
    ObRunLoopAddSource(loop, late.source, kDefault);  // wakes the run that waits
  });
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 1e9), kObRunLoopFinished) << "no source is left";
  adder.join();
}

}  // namespace
