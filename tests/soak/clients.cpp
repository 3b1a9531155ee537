#include "tests/soak/clients.hpp"

#include <map>
#include <set>

#include "library/call.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::soak {

using test::at;
using test::Owned;

namespace {

// Every error that a call may hand out: by code, whether the host's result is told, and the
// messages.
struct Errors {
  bool withResult;
  std::set<std::string> messages;
};
const std::map<std::int64_t, Errors> kErrors = {
    {kMPIOErrorBadArgument,
     {false,
      {"Bad path object reference", "Bad logical unit object reference",
       "newBatchCount cannot be 0", "Bad parameter. algorithmString string is nil",
       "Bad value for batchCount.  Must be greater than 0"}}},
    {kMPIOErrorServiceNotFound,
     {false,
      {"KsServiceMatching unable to locate any services matching multipathed logical units",
       "KsServiceMatching unable to locate any services matching multipathed logical unit paths",
       "KsServiceGetMatchingService failed to find entry matching specified entry ID",
       "Unable to locate needed service in KsRegistry"}}},
    {kMPIOErrorPropertyWriteFailed,
     {true, {"KsRegistryEntrySetObProperty failed", "Unable to set property"}}},
    {kMPIOErrorPathsLackIdentifiers,
     {false,
      {"Attempt to enable LUN with paths lacking IDs",
       "Attempt to disable LUN with paths lacking IDs"}}},
    {kMPIOErrorStatisticsUnavailable, {true, {"sysctlbyname failed"}}},
    {kMPIOErrorNotificationFailed,
     {true,
      {"KsServiceAddMatchingNotification for logical units failed",
       "KsServiceAddMatchingNotification for logical unit paths failed"}}},
    {kMPIOErrorNoResources,
     {false, {"Failed to allocate an internal structure", "Unable to create notification port"}}},
};

bool isOfTheTable(ObErrorRef error) {
  const auto known = kErrors.find(ObErrorGetCode(error));
  if (known == kErrors.end()) return false;
  std::int64_t result = 0;
  const ObTypeRef told = ObDictionaryGetValue(ObErrorGetUserInfo(error), kMPIOErrorResultCodeKey);
  ObNumberGetInt64(static_cast<ObNumberRef>(told), &result);
  return known->second.withResult == (result != 0) &&
         known->second.messages.contains(test::utf8(ObErrorGetDomain(error)));
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
  keepOne(ask(MPIOLogicalUnitCopyPaths, random_.oneOf(units_).get()), paths_);
}

template <class CRef>
void Client::copy(ObDictionaryRef (*copied)(CRef), CRef handle) {
  const Owned<ObDictionaryRef> dictionary(ask(copied, handle));
  for (const char letter : wordsOf(dictionary.get()).dump())
    world_.note(static_cast<unsigned char>(letter));
}

void Client::lookUp(MPIOLogicalUnitRef unit) {
  const EntryID id = unit == nullptr ? 0 : modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
  const ScopedHandle entry(world_.registry(), world_.registry().findServiceByEntryID(id));
  const Owned<MPIOLogicalUnitRef> found(ask(MPIOCopyLogicalUnitForService, entry.get()));
  world_.note(found ? 1 : 0);
  if (Owned<MPIOLogicalUnitPathRef>(MPIOCopyLogicalUnitPathForService(entry.get())))
    world_.complain("a path under the entry of a unit");
}

void Client::list() {
  const auto alone = world_.alone();
  const MPIOLogicalUnitRef unit = random_.oneOf(units_).get();
  const MPIOLogicalUnitPathRef path = random_.oneOf(paths_).get();
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

template <class IsThere, class Call, class... Arguments>
void Client::tryToChange(IsThere isThere, Call call, Arguments... arguments) {
  Owned<ObErrorRef> error;
  const bool done = ask(call, arguments..., error.out());
  noteAnswer(done, error.get());
  // In the other order somebody else may have been at work since.
  if (done && world_.order == Order::kDrawn && !isThere())
    world_.complain("a change that was taken is not there");
}

Words Client::published(MPIOLogicalUnitRef unit, const ob::String& name) {
  const auto* device = modelOf<MPIOLogicalUnit>(unit);
  const auto properties = world_.registry().properties(device->serviceEntryID());
  return properties ? wordsOf(properties->value(name)) : Words();
}

void Client::setAlgorithm(MPIOLogicalUnitRef unit) {
  const std::pair<ObStringRef, std::string_view> algorithms[] = {
      {kMPIOLogicalUnitAlgorithmRoundRobin, "Modified Round Robin"},
      {kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Least Queue Depth"},
      {kMPIOLogicalUnitAlgorithmLeastBytes, "Least Bytes"},
      {kMPIOLogicalUnitAliasKey, "none that is ever there"}};
  const auto& [algorithm, name] = random_.oneOf(algorithms);
  const auto isThere = [&, wanted = name] {
    return published(unit, registry::kLoadBalancingAlgorithm) == wanted;
  };
  tryToChange(isThere, MPIOLogicalUnitSetAlgorithm, unit, algorithm);
}

void Client::setBatchCount(MPIOLogicalUnitRef unit) {
  static constexpr std::uint32_t kCounts[] = {0, 1, 16, 4'294'967'295};
  const std::uint32_t count = random_.oneOf(kCounts);
  const auto isThere = [&] { return published(unit, registry::kBatchCount) == count; };
  tryToChange(isThere, MPIOLogicalUnitSetBatchCount, unit, count);
}

void Client::setPath(MPIOLogicalUnitPathRef path) {
  const bool enable = random_.onceIn(2);
  const auto isThere = [&] {
    const auto statistics = world_.simulated.memory().tunable().pathStatistics(
        modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID());
    return statistics && ((statistics->state & kPathStateDisabledBit) == 0) == enable;
  };
  tryToChange(isThere, enable ? MPIOLogicalUnitPathEnable : MPIOLogicalUnitPathDisable, path);
}

void Client::change() {
  const auto alone = world_.alone();
  const MPIOLogicalUnitRef unit = random_.oneOf(units_).get();
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
      return tryToChange(
          anywhere,
          random_.onceIn(2) ? MPIOLogicalUnitEnableAllPaths : MPIOLogicalUnitDisableAllPaths, unit);
    default:
      return setPath(random_.oneOf(paths_).get());
  }
}

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
