#include "tests/soak/clients.hpp"

#include <set>

#include "library/call.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::soak {

using test::at;
using test::Owned;

namespace {

// Every error that a call may hand out: code, message, and whether the host's result is told.
const std::set<std::tuple<std::int64_t, std::string, bool>> kErrors = {
    {kMPIOErrorBadArgument, "Bad path object reference", false},
    {kMPIOErrorBadArgument, "Bad logical unit object reference", false},
    {kMPIOErrorBadArgument, "newBatchCount cannot be 0", false},
    {kMPIOErrorBadArgument, "Bad parameter. algorithmString string is nil", false},
    {kMPIOErrorBadArgument, "Bad value for batchCount.  Must be greater than 0", false},
    {kMPIOErrorServiceNotFound,
     "KsServiceMatching unable to locate any services matching multipathed logical units", false},
    {kMPIOErrorServiceNotFound,
     "KsServiceMatching unable to locate any services matching multipathed logical unit paths",
     false},
    {kMPIOErrorServiceNotFound,
     "KsServiceGetMatchingService failed to find entry matching specified entry ID", false},
    {kMPIOErrorServiceNotFound, "Unable to locate needed service in KsRegistry", false},
    {kMPIOErrorPropertyWriteFailed, "KsRegistryEntrySetObProperty failed", true},
    {kMPIOErrorPropertyWriteFailed, "Unable to set property", true},
    {kMPIOErrorPathsLackIdentifiers, "Attempt to enable LUN with paths lacking IDs", false},
    {kMPIOErrorPathsLackIdentifiers, "Attempt to disable LUN with paths lacking IDs", false},
    {kMPIOErrorStatisticsUnavailable, "sysctlbyname failed", true},
    {kMPIOErrorNotificationFailed, "KsServiceAddMatchingNotification for logical units failed",
     true},
    {kMPIOErrorNotificationFailed, "KsServiceAddMatchingNotification for logical unit paths failed",
     true},
    {kMPIOErrorNoResources, "Failed to allocate an internal structure", false},
    {kMPIOErrorNoResources, "Unable to create notification port", false},
};

bool isOfTheTable(ObErrorRef error) {
  std::int64_t result = 0;
  ObNumberGetInt64(static_cast<ObNumberRef>(
                       ObDictionaryGetValue(ObErrorGetUserInfo(error), kMPIOErrorResultCodeKey)),
                   &result);
  return kErrors.contains(
      {ObErrorGetCode(error), test::utf8(ObErrorGetDomain(error)), result != 0});
}

}  // namespace

void Client::noteAnswer(bool done, ObErrorRef error) {
  world_.note(done ? 1 : 0);
  if (error == nullptr) return;
  const Owned<ObStringRef> description(ObErrorCopyDescription(error));
  if (done) world_.complain("an error although it was done: " + test::utf8(description.get()));
  if (!isOfTheTable(error)) world_.complain("unknown: " + test::utf8(description.get()));
}

template <class CRef>
void Client::keepOne(ObArrayRef handles, Kept<CRef>& kept) {
  const Owned<ObArrayRef> listed(handles);
  const std::size_t count = ObArrayGetCount(handles);
  world_.note(count);
  if (count != 0) keep(at<CRef>(listed, random_.below(count)), kept, random_);
}

void Client::listUnits() {
  keepOne(ask(MPIOCopyLogicalUnits), units_);
}

void Client::listPaths() {
  keepOne(ask(MPIOLogicalUnitCopyPaths, drawUnit()), paths_);
}

// ---- the one that lists ----

template <class CRef>
void Lister::copy(ObDictionaryRef (*copied)(CRef), CRef handle) {
  const Owned<ObDictionaryRef> dictionary(ask(copied, handle));
  for (const char letter : wordsOf(dictionary.get()).dump())
    world_.note(static_cast<unsigned char>(letter));
}

void Lister::lookUp(MPIOLogicalUnitRef unit) {
  const EntryID id = unit == nullptr ? 0 : modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
  const ScopedHandle entry(world_.registry(), world_.registry().findServiceByEntryID(id));
  const Owned<MPIOLogicalUnitRef> found(ask(MPIOCopyLogicalUnitForService, entry.get()));
  world_.note(found ? 1 : 0);
  if (Owned<MPIOLogicalUnitPathRef>(MPIOCopyLogicalUnitPathForService(entry.get())))
    world_.complain("a path under the entry of a unit");
}

void Lister::work() {
  const auto alone = world_.alone();
  const MPIOLogicalUnitRef unit = drawUnit();
  const MPIOLogicalUnitPathRef path = drawPath();
  switch (random_.below(8)) {
    case 0:
      return listUnits();
    case 1:
      return listPaths();
    case 2:
      return copy(MPIOLogicalUnitCopyProperties, unit);
    case 3:
      return copy(MPIOLogicalUnitCopyStatistics, unit);
    case 4:
      return copy(MPIOLogicalUnitPathCopyProperties, path);
    case 5:
      return copy(MPIOLogicalUnitPathCopyStatistics, path);
    case 6:
      return world_.note(Owned(ask(MPIOLogicalUnitPathCopyLogicalUnit, path)) ? 1 : 0);
    default:
      return lookUp(unit);
  }
}

// ---- the one that changes ----

// isThere: whether the host has what the library says that it took.
template <class IsThere, class Call, class... Arguments>
void Changer::change(IsThere isThere, Call call, Arguments... arguments) {
  Owned<ObErrorRef> error;
  const bool done = ask(call, arguments..., error.out());
  noteAnswer(done, error.get());
  // In the other order somebody else may have been at work since.
  if (done && world_.order == Order::kDrawn && !isThere())
    world_.complain("a change that was taken is not there");
}

Words Changer::published(MPIOLogicalUnitRef unit, const ob::String& name) {
  const auto* device = modelOf<MPIOLogicalUnit>(unit);
  const auto properties = world_.registry().properties(device->serviceEntryID());
  return properties ? wordsOf(properties->value(name)) : Words();
}

void Changer::setAlgorithm(MPIOLogicalUnitRef unit) {
  const std::pair<ObStringRef, std::string_view> algorithms[] = {
      {kMPIOLogicalUnitAlgorithmRoundRobin, "Modified Round Robin"},
      {kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Least Queue Depth"},
      {kMPIOLogicalUnitAlgorithmLeastBytes, "Least Bytes"},
      {kMPIOLogicalUnitAliasKey, "none that is ever there"}};
  const auto& [algorithm, name] = random_.oneOf(algorithms);
  const auto isThere = [&, wanted = name] {
    return published(unit, registry::kLoadBalancingAlgorithm) == wanted;
  };
  change(isThere, MPIOLogicalUnitSetAlgorithm, unit, algorithm);
}

void Changer::setBatchCount(MPIOLogicalUnitRef unit) {
  static constexpr std::uint32_t kCounts[] = {0, 1, 16, 4'294'967'295};
  const std::uint32_t count = random_.oneOf(kCounts);
  const auto isThere = [&] { return published(unit, registry::kBatchCount) == count; };
  change(isThere, MPIOLogicalUnitSetBatchCount, unit, count);
}

void Changer::setPath(MPIOLogicalUnitPathRef path) {
  const bool enable = random_.onceIn(2);
  const auto isThere = [&] {
    const auto statistics = world_.simulated.memory().tunable().pathStatistics(
        modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID());
    return statistics && ((statistics->state & kPathStateDisabledBit) == 0) == enable;
  };
  change(isThere, enable ? MPIOLogicalUnitPathEnable : MPIOLogicalUnitPathDisable, path);
}

void Changer::work() {
  const auto alone = world_.alone();
  const MPIOLogicalUnitRef unit = drawUnit();
  const auto anywhere = [] { return true; };
  switch (random_.below(8)) {
    case 0:
    case 1:
      return listUnits();
    case 2:
    case 3:
      return listPaths();
    case 4:
      return setAlgorithm(unit);
    case 5:
      return setBatchCount(unit);
    case 6:
      return change(
          anywhere,
          random_.onceIn(2) ? MPIOLogicalUnitEnableAllPaths : MPIOLogicalUnitDisableAllPaths, unit);
    default:
      return setPath(drawPath());
  }
}

// ---- the one that listens ----

Listener::Listener(World& world) : Client(world, Stream::kListener) {
  for (test::NotificationClient* client :
       std::initializer_list<test::NotificationClient*>{&onQueue_, &onLoop_}) {
    client->events.reserve(64);  // so that a fault does not hit the client's own notes
    client->onEvent = [this, client](const test::Event& event) { hear(event, *client); };
  }
}

// On the listener's own thread or on that of its queue.
void Listener::hear(const test::Event& event, test::NotificationClient& client) {
  test::allocationFailed();  // the fault was for the library
  const auto alone = world_.alone();
  client.events.clear();
  world_.note(event.id);
  const bool ofUnit = ObGetTypeID(event.handle) == MPIOLogicalUnitGetTypeID();
  const std::string of = ofUnit ? "Logical Unit " : "Logical Unit Path ";
  const std::string kind = test::utf8(event.kind);
  if (kind != of + "Appeared" && kind != of + "Disappeared")
    world_.complain("told of " + of + "with " + kind);
  if (ofUnit) {
    const auto unit = static_cast<MPIOLogicalUnitRef>(event.handle);
    keep(unit, units_, random_);
    const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(unit));
    const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
    world_.note(ObDictionaryGetCount(properties.get()) + ObArrayGetCount(paths.get()));
  } else {
    keep(static_cast<MPIOLogicalUnitPathRef>(event.handle), paths_, random_);
  }
  if (endWithin_.exchange(false)) client.stop();
}

void Listener::startOnQueue() {
  if (onQueue_.notification != nullptr) return;
  const ob::Pool pool;  // that of the error
  Storm::takeGranted();
  bool started = false;
  {
    std::optional<test::HeldQueue> held;  // so that the creation comes before its calls
    if (world_.order == Order::kDrawn) held.emplace(onQueue_.queue.get());
    started = ask([&] { return onQueue_.start(); });
  }
  const std::size_t granted = Storm::takeGranted();
  noteAnswer(started, onQueue_.error);
  if (started) return;
  handlesLeft_ += granted;
  if (onQueue_.error == nullptr) world_.complain("a creation that failed without an error");
}

void Listener::work() {
  // The calls on the run loop are made within these, on this thread, and are alone as well.
  const auto alone = world_.alone();
  const auto failNextOnQueue = [](void*) { test::failAllocationAfter(0); };
  switch (random_.below(8)) {
    case 0:
      return startOnQueue();
    case 1:
      return onQueue_.stop();
    case 2:
      return world_.note(ask([&] { return onLoop_.start(); }) ? 1 : 0);
    case 3:
      ask([&] { return onLoop_.stop(), true; });
      return;
    case 4:
      endWithin_ = random_.onceIn(4);
      return;
    case 5:
      // The pool of what is told of next on the queue.
      if (world_.storm.isRaging() && random_.onceIn(4))
        ObDispatchAsync(onQueue_.queue.get(), failNextOnQueue, nullptr);
      return;
    default:
      return onLoop_.settle();
  }
}

// A registration whose end failed for want of a pool ends with its next end.
void Listener::finish() {
  const auto alone = world_.alone();
  endWithin_ = false;
  onQueue_.stop();
  ObDispatchAsync(
      onQueue_.queue.get(), [](void*) { test::allocationFailed(); }, nullptr);
  onLoop_.start();
  onLoop_.stop();
}

}  // namespace tavrenix::soak
