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

#include "runtime/c_bridge.hpp"
#include "runtime/string.hpp"

namespace {

const ObStringRef kDefault = kObRunLoopDefaultMode;
constinit ob::ConstantString otherMode("Other");
const ObStringRef kOther = ob::toC<ObStringRef>(&otherMode.string);

// A source that notes what is called, and can be told what to do when it is performed.
struct Probe {
  std::atomic<int> references{0};
  int performed = 0;
  std::string modes;  // "+Mode " where it is scheduled, "-Mode " where that is cancelled
  ObRunLoopRef lastLoop = nullptr;
  std::function<void()> onPerform = [] {};
  ObRunLoopSourceRef source = nullptr;

  Probe() {
    ObRunLoopSourceContext context{};
    context.info = this;
    context.retain = [](void* info) { ++of(info).references; };
    context.release = [](void* info) { --of(info).references; };
    context.schedule = [](void* info, ObRunLoopRef loop, ObStringRef mode) {
      of(info).note("+", loop, mode);
    };
    context.cancel = [](void* info, ObRunLoopRef loop, ObStringRef mode) {
      of(info).note("-", loop, mode);
    };
    context.perform = [](void* info) {
      ++of(info).performed;
      of(info).onPerform();
    };
    source = ObRunLoopSourceCreate(&context);
  }
  explicit Probe(ObStringRef mode) : Probe() { add(mode); }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe() {
    ObRunLoopSourceInvalidate(source);
    ObRelease(source);
    while (references != 0) std::this_thread::yield();  // the loop of another thread may be at it
  }
  bool add(ObStringRef mode) { return ObRunLoopAddSource(ObRunLoopGetCurrent(), source, mode); }
  bool remove(ObStringRef mode = kDefault) {
    return ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source, mode);
  }
  void signal() { ObRunLoopSourceSignal(source); }

 private:
  static Probe& of(void* info) { return *static_cast<Probe*>(info); }
  void note(const char* sign, ObRunLoopRef loop, ObStringRef mode) {
    modes += sign + std::string(ObStringGetUTF8(mode)) + " ";
    lastLoop = loop;
  }
};

bool readable() {
  pollfd waited{ObRunLoopGetDescriptor(ObRunLoopGetCurrent()), POLLIN, 0};
  return poll(&waited, 1, 0) == 1;
}

// From another thread, and over when it returns.
void elsewhere(const std::function<void()>& work) {
  std::thread(work).join();
}

TEST(RunLoop, EachThreadHasOneOfItsOwn) {
  ObRunLoopRef other = nullptr;
  elsewhere([&] { other = ObRunLoopGetCurrent(); });
  EXPECT_NE(other, nullptr);
  EXPECT_NE(ObRunLoopGetCurrent(), other);
  EXPECT_EQ(ObRunLoopGetCurrent(), ObRunLoopGetCurrent());
}

TEST(RunLoop, ScheduleAndCancelAreCalledWithinAddRemoveAndInvalidate) {
  const std::string usual = ObStringGetUTF8(kDefault);
  Probe probe;
  EXPECT_TRUE(probe.add(kDefault));
  EXPECT_TRUE(probe.add(kDefault)) << "a second time is no failure";
  EXPECT_EQ(probe.modes, "+" + usual + " ");
  EXPECT_EQ(probe.lastLoop, ObRunLoopGetCurrent());
  EXPECT_TRUE(probe.add(kOther));
  EXPECT_TRUE(ObRunLoopContainsSource(ObRunLoopGetCurrent(), probe.source, kOther));
  EXPECT_TRUE(probe.remove());
  EXPECT_FALSE(probe.remove());
  EXPECT_EQ(probe.modes, "+" + usual + " +Other -" + usual + " ");
  ObRunLoopSourceInvalidate(probe.source);
  EXPECT_FALSE(ObRunLoopSourceIsValid(probe.source));
  EXPECT_FALSE(probe.add(kDefault));
  EXPECT_EQ(probe.modes, "+" + usual + " +Other -" + usual + " -Other ");
}

TEST(RunLoop, TheLoopHoldsASourceAndTheSourceItsInfo) {
  Probe probe(kOther);
  EXPECT_EQ(probe.references, 1);
  ObRunLoopSourceRef source = std::exchange(probe.source, nullptr);
  ObRelease(source);
  EXPECT_EQ(probe.references, 1) << "held by the loop";
  EXPECT_TRUE(ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source, kOther));
  EXPECT_EQ(probe.modes, "+Other -Other ") << "before the last reference went";
  EXPECT_EQ(probe.references, 0);
}

TEST(RunLoop, PerformsSignalledSourcesOfTheModeOnce) {
  Probe probe;
  probe.signal();  // before it is added
  probe.add(kDefault);
  Probe other(kOther);
  other.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut);
  EXPECT_EQ(probe.performed, 1);
  EXPECT_EQ(other.performed, 0);
  EXPECT_EQ(ObRunLoopRunInMode(kOther, 0), kObRunLoopTimedOut);
  EXPECT_EQ(other.performed, 1) << "the run in another mode forgot its signal";
  probe.signal();
  probe.signal();
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_FALSE(ObRunLoopPerformDue(kDefault));
  EXPECT_EQ(probe.performed, 2);
}

TEST(RunLoop, TheDescriptorIsReadableAsLongAsSomethingIsDue) {
  Probe probe(kDefault);
  Probe other(kOther);
  ObRunLoopPerformDue(kDefault);
  EXPECT_FALSE(readable());
  elsewhere([&] { probe.signal(); });
  EXPECT_FALSE(ObRunLoopPerformDue(kOther));
  EXPECT_TRUE(readable()) << "what is due in another mode";
  probe.onPerform = [&] {
    if (probe.performed == 1) probe.signal();
  };
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_TRUE(readable()) << "what came up while performing";
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_EQ(probe.performed, 2);
  EXPECT_FALSE(readable());
  ObRunLoopWakeUp(ObRunLoopGetCurrent());
  EXPECT_TRUE(readable());
  EXPECT_FALSE(ObRunLoopPerformDue(kDefault));
  EXPECT_FALSE(readable());
}

TEST(RunLoop, ARunEndsWhenNoSourceIsLeft) {
  EXPECT_EQ(ObRunLoopRunInMode(kOther, 60), kObRunLoopFinished);
  Probe probe(kOther);
  probe.onPerform = [&] {
    probe.remove(kOther);
    ObRunLoopPerformDue(kDefault);  // which leaves the end to the run around it
  };
  probe.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kOther, 60), kObRunLoopFinished);

  ObRunLoopRef loop = ObRunLoopGetCurrent();
  std::promise<void> running;
  probe.onPerform = [&] { running.set_value(); };
  probe.add(kOther);
  probe.signal();
  std::thread remover([&] {
    running.get_future().wait();
    ObRunLoopRemoveSource(loop, probe.source, kOther);
  });
  EXPECT_EQ(ObRunLoopRunInMode(kOther, 60), kObRunLoopFinished) << "while it waited";
  remover.join();
}

TEST(RunLoop, StopEndsTheInnermostRunOrElseTheNextOne) {
  Probe probe(kDefault);
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  elsewhere([&] { ObRunLoopStop(loop); });
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 60), kObRunLoopStopped);

  ObRunLoopResult inner{};
  probe.onPerform = [&] {
    elsewhere([&] { ObRunLoopStop(loop); });
    inner = ObRunLoopRunInMode(kDefault, 60);
  };
  probe.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 0), kObRunLoopTimedOut) << "the stop was the inner run's";
  EXPECT_EQ(inner, kObRunLoopStopped);

  probe.performed = 0;
  probe.onPerform = [&] {
    probe.performed == 1 ? probe.signal() : ObRunLoopStop(loop);
    ObRunLoopPerformDue(kOther);  // which leaves signal and stop to the run around it
  };
  probe.signal();
  EXPECT_EQ(ObRunLoopRunInMode(kDefault, 60), kObRunLoopStopped);
  EXPECT_EQ(probe.performed, 2);
}

// A wake sends the run round; the stop comes while it is on its way.
TEST(RunLoop, AStopThatComesRightAfterAWakeIsNotLost) {
  constexpr int kRounds = 20000;
  Probe probe(kDefault);
  std::atomic<int> round{0};
  std::thread stopper([&, loop = ObRunLoopGetCurrent()] {
    for (int next = 1; next <= kRounds; ++next) {
      while (round.load() != next) std::this_thread::yield();
      ObRunLoopWakeUp(loop);
      ObRunLoopStop(loop);
    }
  });
  int stopped = 0;
  for (int next = 1; next <= kRounds; ++next) {
    round = next;
    if (ObRunLoopRunInMode(kDefault, 1e9) == kObRunLoopStopped) ++stopped;
  }
  stopper.join();
  EXPECT_EQ(stopped, kRounds);
}

TEST(RunLoop, ACallbackMayRemoveAnotherSourceThatIsDueInTheSamePass) {
  Probe first(kDefault);
  Probe second(kDefault);
  first.onPerform = [&] { second.remove(); };
  first.signal();
  second.signal();
  ObRunLoopPerformDue(kDefault);
  EXPECT_EQ(first.performed, 1);
  EXPECT_EQ(second.performed, 0);
}

TEST(RunLoop, TheEndOfAThreadCancelsWhatItsLoopHolds) {
  Probe probe;
  ObRunLoopRef loop = nullptr;
  elsewhere([&] {
    loop = ObRunLoopGetCurrent();
    ObRetain(loop);
    probe.add(kOther);
  });
  EXPECT_EQ(probe.modes, "+Other -Other ");
  EXPECT_EQ(probe.lastLoop, loop);
  EXPECT_FALSE(ObRunLoopAddSource(loop, probe.source, kOther)) << "nobody would perform it";
  EXPECT_EQ(probe.modes, "+Other -Other ");
  ObRunLoopStop(loop);
  ObRelease(loop);
}

TEST(RunLoop, RefusesWhatIsNoLoopSourceOrMode) {
  Probe probe;
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  EXPECT_FALSE(ObRunLoopAddSource(nullptr, probe.source, kDefault));
  EXPECT_FALSE(ObRunLoopAddSource(loop, nullptr, kDefault));
  EXPECT_FALSE(ObRunLoopAddSource(loop, probe.source, nullptr));
  EXPECT_EQ(ObRunLoopSourceCreate(nullptr), nullptr);
  EXPECT_FALSE(ObRunLoopSourceIsValid(nullptr));
  EXPECT_EQ(ObRunLoopGetDescriptor(nullptr), -1);
  ObRunLoopWakeUp(nullptr);
  const ObRunLoopSourceContext empty{};
  ObRunLoopSourceRef silent = ObRunLoopSourceCreate(&empty);
  EXPECT_TRUE(ObRunLoopAddSource(loop, silent, kDefault));
  ObRunLoopSourceSignal(silent);
  EXPECT_TRUE(ObRunLoopPerformDue(kDefault));
  EXPECT_TRUE(ObRunLoopRemoveSource(loop, silent, kDefault));
  ObRelease(silent);
}

// For the thread sanitizer above all: sources are retained, released, signalled and invalidated by
// other threads while a loop runs, and no signal is lost.
TEST(RunLoop, ManyThreadsSignalWhileTheLoopRuns) {
  constexpr int kRounds = 500;
  std::promise<ObRunLoopRef> started;
  std::thread runner([&] {
    const Probe keepsRunning(kDefault);
    started.set_value(ObRunLoopGetCurrent());
    ObRunLoopRun();
  });
  ObRunLoopRef loop = started.get_future().get();
  const auto signalMany = [&] {
    for (int round = 0; round < kRounds; ++round) {
      std::promise<void> done;
      Probe probe;
      probe.onPerform = [&] { done.set_value(); };
      ObRunLoopAddSource(loop, probe.source, kDefault);
      probe.signal();
      done.get_future().wait();
    }
  };
  std::vector<std::thread> signallers;
  for (int i = 0; i < 4; ++i) signallers.emplace_back(signalMany);
  for (auto& signaller : signallers) signaller.join();
  ObRunLoopStop(loop);
  runner.join();
}

}  // namespace
