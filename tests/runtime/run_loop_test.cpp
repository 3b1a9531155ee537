// Run loops and their sources, through the C interface.
#include <gtest/gtest.h>
#include <poll.h>
#include <tavrenix/ob.h>

#include <atomic>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

const ObStringRef kDefault = kObRunLoopDefaultMode;

// A source that counts what is called, and can be told what to do when it is performed.
struct Probe {
  std::atomic<int> references{0};
  int scheduled = 0;
  int cancelled = 0;
  int performed = 0;
  ObRunLoopRef lastLoop = nullptr;
  std::string lastMode;
  std::function<void()> onPerform;
  ObRunLoopSourceRef source = nullptr;

  Probe() {
    ObRunLoopSourceContext context{};
    context.info = this;
    context.retain = [](void* info) { ++of(info).references; };
    context.release = [](void* info) { --of(info).references; };
    context.schedule = [](void* info, ObRunLoopRef loop, ObStringRef mode) {
      ++of(info).scheduled;
      of(info).lastLoop = loop;
      of(info).lastMode = ObStringGetUTF8(mode);
    };
    context.cancel = [](void* info, ObRunLoopRef loop, ObStringRef mode) {
      ++of(info).cancelled;
      of(info).lastLoop = loop;
      of(info).lastMode = ObStringGetUTF8(mode);
    };
    context.perform = [](void* info) {
      ++of(info).performed;
      if (of(info).onPerform) of(info).onPerform();
    };
    source = ObRunLoopSourceCreate(&context);
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe() {
    if (source == nullptr) return;
    ObRunLoopSourceInvalidate(source);
    drop();
  }
  void drop() { ObRelease(std::exchange(source, nullptr)); }
  bool add(ObStringRef mode = kDefault) {
    return ObRunLoopAddSource(ObRunLoopGetCurrent(), source, mode);
  }
  bool remove(ObStringRef mode = kDefault) {
    return ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source, mode);
  }
  static Probe& of(void* info) { return *static_cast<Probe*>(info); }
};

class RunLoop : public testing::Test {
 protected:
  ~RunLoop() override { ObRelease(otherMode); }
  static bool readable() {
    pollfd waited{ObRunLoopGetDescriptor(ObRunLoopGetCurrent()), POLLIN, 0};
    return poll(&waited, 1, 0) == 1;
  }
  ObStringRef otherMode = ObStringCreateWithUTF8("Other");
};

TEST_F(RunLoop, EachThreadHasOneOfItsOwn) {
  ObRunLoopRef mine = ObRunLoopGetCurrent();
  EXPECT_EQ(mine, ObRunLoopGetCurrent());
  EXPECT_EQ(ObGetTypeID(mine), ObRunLoopGetTypeID());
  ObRunLoopRef other = nullptr;
  std::thread([&] { other = ObRunLoopGetCurrent(); }).join();
  EXPECT_NE(other, nullptr);
  EXPECT_NE(mine, other);
}

TEST_F(RunLoop, ScheduleAndCancelAreCalledWithinAddRemoveAndInvalidate) {
  Probe probe;
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  EXPECT_TRUE(probe.add());
  EXPECT_EQ(probe.scheduled, 1);
  EXPECT_EQ(probe.lastLoop, loop);
  EXPECT_EQ(probe.lastMode, ObStringGetUTF8(kDefault));
  EXPECT_TRUE(probe.add()) << "a second time is no failure";
  EXPECT_EQ(probe.scheduled, 1);
  EXPECT_TRUE(probe.add(otherMode));
  EXPECT_EQ(probe.scheduled, 2);
  EXPECT_TRUE(ObRunLoopContainsSource(loop, probe.source, otherMode));

  EXPECT_TRUE(probe.remove());
  EXPECT_EQ(probe.cancelled, 1);
  EXPECT_FALSE(probe.remove());
  EXPECT_EQ(probe.cancelled, 1);
  ObRunLoopSourceInvalidate(probe.source);
  EXPECT_EQ(probe.cancelled, 2);
  EXPECT_EQ(probe.lastMode, "Other");
  EXPECT_FALSE(ObRunLoopSourceIsValid(probe.source));
  EXPECT_FALSE(probe.add());
  EXPECT_EQ(probe.scheduled, 2);
}

TEST_F(RunLoop, TheLoopHoldsASourceAndTheSourceItsInfo) {
  Probe probe;
  EXPECT_EQ(probe.references, 1);
  ObRunLoopSourceRef source = probe.source;
  probe.add();
  probe.drop();
  EXPECT_EQ(probe.references, 1) << "held by the loop";
  EXPECT_TRUE(ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source, kDefault));
  EXPECT_EQ(probe.cancelled, 1) << "before the last reference went";
  EXPECT_EQ(probe.references, 0);
}

TEST_F(RunLoop, PerformsSignalledSourcesOfTheModeOnce) {
  Probe probe;
  Probe elsewhere;
  probe.add();
  elsewhere.add(otherMode);
  ObRunLoopSourceSignal(probe.source);
  ObRunLoopSourceSignal(probe.source);
  ObRunLoopSourceSignal(elsewhere.source);
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut);
  EXPECT_EQ(probe.performed, 1);
  EXPECT_EQ(elsewhere.performed, 0);
  EXPECT_EQ(ObRunLoopRunInMode(otherMode, 0), kObRunLoopTimedOut);
  EXPECT_EQ(elsewhere.performed, 1) << "the run in another mode forgot its signal";
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut);
  EXPECT_EQ(probe.performed, 1);
}

TEST_F(RunLoop, ASignalBeforeTheAddIsNotForgotten) {
  Probe probe;
  ObRunLoopSourceSignal(probe.source);
  probe.add();
  EXPECT_TRUE(readable());
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_EQ(probe.performed, 1);
}

TEST_F(RunLoop, AClientsOwnLoopNeedsTheDescriptorAndPerformDueAlone) {
  Probe probe;
  probe.add();
  ObRunLoopPerformDue(kDefault);
  EXPECT_FALSE(readable());
  EXPECT_FALSE(ObRunLoopPerformDue(kDefault));
  std::thread([&] { ObRunLoopSourceSignal(probe.source); }).join();
  EXPECT_TRUE(readable());
  probe.onPerform = [&] {
    if (probe.performed == 1) ObRunLoopSourceSignal(probe.source);  // more work, from within
  };
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_EQ(probe.performed, 1);
  EXPECT_TRUE(readable()) << "what came up while performing";
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_EQ(probe.performed, 2);
  EXPECT_FALSE(readable());
}

TEST_F(RunLoop, ARunEndsWhenNoSourceIsLeft) {
  EXPECT_EQ(ObRunLoopRunInMode(otherMode, 60), kObRunLoopFinished);
  Probe probe;
  probe.add();
  probe.onPerform = [&] { ObRunLoopSourceInvalidate(probe.source); };
  ObRunLoopSourceSignal(probe.source);
  ObRunLoopRun();
  EXPECT_EQ(probe.performed, 1);
  EXPECT_EQ(probe.cancelled, 1);
}

TEST_F(RunLoop, AnotherThreadsRemoveEndsAWaitingRun) {
  Probe probe;
  probe.add();
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  std::promise<void> running;
  probe.onPerform = [&] { running.set_value(); };
  ObRunLoopSourceSignal(probe.source);
  std::thread remover([&] {
    running.get_future().wait();
    ObRunLoopRemoveSource(loop, probe.source, kDefault);
  });
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 60), kObRunLoopFinished);
  remover.join();
}

TEST_F(RunLoop, StopEndsTheInnermostRunOrElseTheNextOne) {
  Probe probe;
  probe.add();
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  std::thread([&] { ObRunLoopStop(loop); }).join();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 60), kObRunLoopStopped);

  ObRunLoopResult inner{};
  probe.onPerform = [&] {
    if (probe.performed > 1) return;
    std::thread([&] { ObRunLoopStop(loop); }).join();
    inner = ObRunLoopRunInMode(kDefault, 60);
  };
  ObRunLoopSourceSignal(probe.source);
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut) << "the stop was the inner run's";
  EXPECT_EQ(inner, kObRunLoopStopped);
}

TEST_F(RunLoop, ACallbackMayRemoveAnotherSourceThatIsDueInTheSamePass) {
  Probe first;
  Probe second;
  first.add();
  second.add();
  first.onPerform = [&] { second.remove(); };
  ObRunLoopSourceSignal(first.source);
  ObRunLoopSourceSignal(second.source);
  ObRunLoopPerformDue(kDefault);
  EXPECT_EQ(first.performed, 1);
  EXPECT_EQ(second.performed, 0);
}

TEST_F(RunLoop, TheEndOfAThreadCancelsWhatItsLoopHolds) {
  Probe probe;
  ObRunLoopRef loop = nullptr;
  std::thread([&] {
    loop = ObRunLoopGetCurrent();
    ObRetain(loop);
    probe.add();
  }).join();
  EXPECT_EQ(probe.cancelled, 1);
  EXPECT_EQ(probe.lastLoop, loop);
  EXPECT_FALSE(ObRunLoopAddSource(loop, probe.source, kDefault)) << "nobody would perform it";
  EXPECT_EQ(probe.scheduled, 1);
  EXPECT_EQ(ObRunLoopGetDescriptor(nullptr), -1);
  ObRunLoopStop(loop);
  ObRelease(loop);
}

TEST_F(RunLoop, RefusesWhatIsNoLoopSourceOrMode) {
  Probe probe;
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  EXPECT_FALSE(ObRunLoopAddSource(nullptr, probe.source, kDefault));
  EXPECT_FALSE(ObRunLoopAddSource(loop, nullptr, kDefault));
  EXPECT_FALSE(ObRunLoopAddSource(loop, probe.source, nullptr));
  EXPECT_EQ(ObRunLoopSourceCreate(nullptr), nullptr);
  EXPECT_FALSE(ObRunLoopSourceIsValid(nullptr));
  const ObRunLoopSourceContext empty{};
  ObRunLoopSourceRef silent = ObRunLoopSourceCreate(&empty);
  EXPECT_TRUE(ObRunLoopAddSource(loop, silent, kDefault));
  ObRunLoopSourceSignal(silent);
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_TRUE(ObRunLoopRemoveSource(loop, silent, kDefault));
  ObRelease(silent);
}

// For the thread sanitizer above all: sources are retained, released, signalled and invalidated by
// other threads while loops run, and no signal is lost.
TEST_F(RunLoop, ManyThreadsSignalWhileTheLoopRuns) {
  constexpr int kSignallers = 4;
  constexpr int kRounds = 500;
  std::promise<ObRunLoopRef> started;
  std::atomic<int> performed{0};
  std::thread runner([&] {
    Probe keepsRunning;
    keepsRunning.add();
    started.set_value(ObRunLoopGetCurrent());
    ObRunLoopRun();
  });
  ObRunLoopRef loop = started.get_future().get();
  std::vector<std::thread> signallers;
  for (int i = 0; i < kSignallers; ++i) {
    signallers.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        std::promise<void> done;
        ObRunLoopSourceContext context{};
        auto onPerform = [&] {
          ++performed;
          done.set_value();
        };
        using OnPerform = decltype(onPerform);
        context.info = &onPerform;
        context.perform = [](void* info) { (*static_cast<OnPerform*>(info))(); };
        ObRunLoopSourceRef source = ObRunLoopSourceCreate(&context);
        ObRunLoopAddSource(loop, source, kDefault);
        ObRunLoopSourceSignal(source);
        done.get_future().wait();
        ObRunLoopSourceInvalidate(source);
        ObRelease(source);
      }
    });
  }
  for (auto& signaller : signallers) signaller.join();
  ObRunLoopStop(loop);
  runner.join();
  EXPECT_EQ(performed, kSignallers * kRounds);
}

}  // namespace
