#include "tests/soak/clients.hpp"

#include "library/call.hpp"
#include "model/registry_names.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/soak/answers.hpp"

namespace tavrenix::soak {

using test::at;
using test::Owned;

void Client::note(const std::optional<std::string>& fault, std::uint64_t answer) {
  if (fault) world_.findings.add(*fault);
  world_.findings.note(answer);
}

void Client::listUnits() {
  const Owned<ObArrayRef> units([&] {
    const PoolFault fault(world_.storm, random_);
    return MPIOCopyLogicalUnits();
  }());
  const std::size_t count = ObArrayGetCount(units.get());
  note({}, count);
  if (count != 0) units_.add(at<MPIOLogicalUnitRef>(units, random_.below(count)));
}

void Client::listPaths() {
  const Owned<ObArrayRef> paths([&] {
    const PoolFault fault(world_.storm, random_);
    return MPIOLogicalUnitCopyPaths(units_.draw(random_));
  }());
  const std::size_t count = ObArrayGetCount(paths.get());
  note({}, count);
  if (count != 0) paths_.add(at<MPIOLogicalUnitPathRef>(paths, random_.below(count)));
}

// ---- the one that lists ----

void Lister::work() {
  const auto alone = turns_.alone();
  const MPIOLogicalUnitRef unit = units_.draw(random_);
  const MPIOLogicalUnitPathRef path = paths_.draw(random_);
  const auto copy = [&](ObDictionaryRef (*copied)(const void*), const void* handle,
                        std::initializer_list<ExpectedKind> kinds) {
    const Owned<ObDictionaryRef> dictionary([&] {
      const PoolFault fault(world_.storm, random_);
      return copied(handle);
    }());
    note(faultOf(dictionary.get(), kinds), ObDictionaryGetCount(dictionary.get()));
  };
  const ObTypeID text = ObStringGetTypeID(), number = ObNumberGetTypeID();
  switch (random_.below(8)) {
    case 0:
      return listUnits();
    case 1:
      return listPaths();
    case 2:
      return copy(
          [](const void* handle) {
            return MPIOLogicalUnitCopyProperties(static_cast<MPIOLogicalUnitRef>(handle));
          },
          unit,
          {{kMPIOLogicalUnitIdentifierKey, text},
           {kMPIOLogicalUnitAliasKey, text},
           {kMPIOLogicalUnitVendorIDKey, text},
           {kMPIOLogicalUnitProductIDKey, text},
           {kMPIOLogicalUnitAlgorithmKey, text},
           {kMPIOLogicalUnitBatchCountKey, number},
           {kMPIOLogicalUnitVolumesKey, ObArrayGetTypeID()}});
    case 3:
      return copy(
          [](const void* handle) {
            return MPIOLogicalUnitCopyStatistics(static_cast<MPIOLogicalUnitRef>(handle));
          },
          unit,
          {{kMPIOLogicalUnitStatisticsSamplingDateKey, ObDateGetTypeID()},
           {kMPIOLogicalUnitStatisticsBytesSentKey, number},
           {kMPIOLogicalUnitStatisticsBytesReceivedKey, number},
           {kMPIOLogicalUnitStatisticsTotalBytesKey, number},
           {kMPIOLogicalUnitStatisticsTotalCommandsKey, number}});
    case 4:
      return copy(
          [](const void* handle) {
            return MPIOLogicalUnitPathCopyProperties(static_cast<MPIOLogicalUnitPathRef>(handle));
          },
          path,
          {{kMPIOLogicalUnitPathIdentifierKey, text},
           {kMPIOLogicalUnitPathStateKey, text},
           {kMPIOLogicalUnitPathEnabledKey, ObBooleanGetTypeID()},
           {kMPIOLogicalUnitPathInterconnectKey, text},
           {kMPIOLogicalUnitPathHostPortIdentifierKey, ObDataGetTypeID()}});
    case 5:
      return copy(
          [](const void* handle) {
            return MPIOLogicalUnitPathCopyStatistics(static_cast<MPIOLogicalUnitPathRef>(handle));
          },
          path,
          {{kMPIOLogicalUnitPathStatisticsSamplingDateKey, ObDateGetTypeID()},
           {kMPIOLogicalUnitPathStatisticsPathStateKey, number},
           {kMPIOLogicalUnitPathStatisticsBytesSentKey, number},
           {kMPIOLogicalUnitPathStatisticsBytesReceivedKey, number},
           {kMPIOLogicalUnitPathStatisticsTotalBytesKey, number},
           {kMPIOLogicalUnitPathStatisticsTotalCommandsKey, number}});
    case 6: {
      const PoolFault fault(world_.storm, random_);
      const Owned<MPIOLogicalUnitRef> found(MPIOLogicalUnitPathCopyLogicalUnit(path));
      return note({}, found ? 1 : 0);
    }
    default: {
      const EntryID id = unit == nullptr ? 0 : modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
      const ScopedHandle entry(world_.registry(), world_.registry().findServiceByEntryID(id));
      const PoolFault fault(world_.storm, random_);
      const Owned<MPIOLogicalUnitRef> found(MPIOCopyLogicalUnitForService(entry.get()));
      const Owned<MPIOLogicalUnitPathRef> none(MPIOCopyLogicalUnitPathForService(entry.get()));
      return note(none ? std::optional("a path under the entry of a unit") : std::nullopt,
                  found ? 1 : 0);
    }
  }
}

// ---- the one that changes ----

void Changer::work() {
  const auto alone = turns_.alone();
  switch (random_.below(4)) {
    case 0:
      return listUnits();
    case 1:
      return listPaths();
    case 2:
      return changeUnit(units_.draw(random_));
    default:
      return changePath(paths_.draw(random_));
  }
}

void Changer::changeUnit(MPIOLogicalUnitRef unit) {
  static constexpr std::uint32_t kCounts[] = {0, 1, 16, 4'294'967'295};
  const ObStringRef algorithms[] = {kMPIOLogicalUnitAlgorithmRoundRobin,
                                    kMPIOLogicalUnitAlgorithmLeastQueueDepth,
                                    kMPIOLogicalUnitAlgorithmLeastBytes, kMPIOLogicalUnitAliasKey};
  const std::uint64_t which = random_.below(4);
  const ObStringRef algorithm = algorithms[random_.below(std::size(algorithms))];
  const std::uint32_t count = kCounts[random_.below(std::size(kCounts))];
  Owned<ObErrorRef> error;
  bool done = false;
  {
    const PoolFault fault(world_.storm, random_);
    done = which == 0   ? MPIOLogicalUnitSetAlgorithm(unit, algorithm, error.out())
           : which == 1 ? MPIOLogicalUnitSetBatchCount(unit, count, error.out())
           : which == 2 ? MPIOLogicalUnitEnableAllPaths(unit, error.out())
                        : MPIOLogicalUnitDisableAllPaths(unit, error.out());
  }
  note(faultOf(error.get(), done), done ? 1 : 0);
  if (!done || which > 1 || world_.order == Order::kFree) return;
  // Nobody else was at work, so the host must have what the library says that it took.
  const EntryID id = modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
  const auto properties = world_.registry().properties(id);
  const auto* taken = properties == nullptr ? nullptr
                      : which == 0          ? properties->value(registry::kLoadBalancingAlgorithm)
                                            : properties->value(registry::kBatchCount);
  // The public name of an algorithm ends in the driver's, but for round robin.
  const auto* name = ob::as<ob::String>(taken);
  const bool same =
      which == 1 ? taken != nullptr && taken->equals(*ob::Number::make(std::int64_t{count}))
                 : name != nullptr &&
                       test::utf8(algorithm).ends_with(
                           name->view() == "Modified Round Robin" ? "Round Robin" : name->view());
  if (!same) note("a change that was taken is not there", 0);
}

void Changer::changePath(MPIOLogicalUnitPathRef path) {
  const bool enable = random_.onceIn(2);
  Owned<ObErrorRef> error;
  bool done = false;
  {
    const PoolFault fault(world_.storm, random_);
    done = enable ? MPIOLogicalUnitPathEnable(path, error.out())
                  : MPIOLogicalUnitPathDisable(path, error.out());
  }
  note(faultOf(error.get(), done), done ? 1 : 0);
  if (!done || world_.order == Order::kFree) return;
  const EntryID id = modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID();
  const auto statistics = world_.simulated.memory().tunable().pathStatistics(id);
  const bool enabled = statistics && (statistics->state & kPathStateDisabledBit) == 0;
  if (!statistics || enabled != enable) note("a change that was taken is not there", 0);
}

// ---- the one that listens ----

Listener::Listener(World& world, Turns& turns, Random random) : Client(world, turns, random) {
  for (test::NotificationClient* client : {static_cast<test::NotificationClient*>(&onQueue_),
                                           static_cast<test::NotificationClient*>(&onLoop_)}) {
    client->events.reserve(64);  // so that a fault does not hit the client's own notes
    client->onEvent = [this, client](const test::Event& event) { hear(event, *client); };
  }
}

// On the listener's own thread or on that of its queue.
void Listener::hear(const test::Event& event, test::NotificationClient& client) {
  test::allocationFailed();  // the fault was for the library
  const auto alone = turns_.alone();
  client.events.clear();
  const bool ofUnit = ObGetTypeID(event.handle) == MPIOLogicalUnitGetTypeID();
  const bool known = ofUnit ? event.kind == kMPIOLogicalUnitAppearedNotification ||
                                  event.kind == kMPIOLogicalUnitDisappearedNotification
                            : event.kind == kMPIOLogicalUnitPathAppearedNotification ||
                                  event.kind == kMPIOLogicalUnitPathDisappearedNotification;
  note(known ? std::nullopt : std::optional("a kind of event that is none of the handle's"),
       event.id);
  if (ofUnit) {
    const auto unit = static_cast<MPIOLogicalUnitRef>(event.handle);
    units_.add(unit);
    const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(unit));
    const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
    note({}, ObDictionaryGetCount(properties.get()) + ObArrayGetCount(paths.get()));
  } else {
    paths_.add(static_cast<MPIOLogicalUnitPathRef>(event.handle));
  }
  if (endWithin_.exchange(false)) client.stop();
}

void Listener::startOnQueue() {
  if (onQueue_.notification != nullptr) return;
  const ObPoolRef pool = ObPoolCreate();  // that of the error
  Storm::takeGranted();
  bool started = false;
  {
    std::optional<test::HeldQueue> held;  // so that the creation comes before its calls
    if (world_.order == Order::kDrawn) held.emplace(onQueue_.queue.get());
    const PoolFault fault(world_.storm, random_);
    started = onQueue_.start();
  }
  const std::size_t granted = Storm::takeGranted();
  if (!started) handlesLeft_ += granted;
  note(!started && onQueue_.error == nullptr
           ? std::optional("a creation that failed without an error")
           : faultOf(onQueue_.error, started),
       started ? 1 : 0);
  ObPoolDrain(pool);
}

void Listener::work() {
  // The calls on the run loop are made within these, on this thread, and are alone as well.
  const auto alone = turns_.alone();
  switch (random_.below(8)) {
    case 0:
      return startOnQueue();
    case 1:
      return onQueue_.stop();
    case 2: {
      const PoolFault fault(world_.storm, random_);
      return note({}, onLoop_.start() ? 1 : 0);
    }
    case 3: {
      const PoolFault fault(world_.storm, random_);
      return onLoop_.stop();
    }
    case 4:
      endWithin_ = random_.onceIn(4);
      return;
    case 5:
      // The pool of what is told of next on the queue.
      if (world_.storm.isRaging() && random_.onceIn(4))
        ObDispatchAsync(
            onQueue_.queue.get(), [](void*) { test::failAllocationAfter(0); }, nullptr);
      return;
    default:
      return onLoop_.settle();
  }
}

// A registration whose end failed for want of a pool ends with its next end.
void Listener::finish() {
  endWithin_ = false;
  onQueue_.stop();
  ObDispatchAsync(
      onQueue_.queue.get(), [](void*) { test::allocationFailed(); }, nullptr);
  onLoop_.start();
  onLoop_.stop();
}

}  // namespace tavrenix::soak
