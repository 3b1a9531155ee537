// The clients. Each works on one thread, one call at a time, with handles that it keeps for a
// while, also when their devices are gone by then.
#pragma once

#include "tests/library/failing_new.hpp"
#include "tests/library/notification_clients.hpp"
#include "tests/soak/shown.hpp"
#include "tests/soak/world.hpp"

namespace tavrenix::soak {

// Some handles, none as long as a place is empty.
template <class CRef>
using Kept = std::array<test::Owned<CRef>, 8>;

template <class CRef>
void keep(CRef handle, Kept<CRef>& kept, Random& random) {
  random.oneOf(kept) = test::Owned<CRef>(static_cast<CRef>(ObRetain(handle)));
}

// One that lists or one that changes.
class Client {
 public:
  Client(World& world, Stream stream) : world_(world), random_(world.seed, stream) {}
  // One operation, as drawn: lists, or copies properties and statistics.
  void list();
  // One operation, as drawn: lists, or changes algorithm, batch count and path states.
  void change();

 protected:
  // What the call answers, at times where its first allocation fails: that of its scratch pool.
  template <class Call, class... Arguments>
  auto ask(Call call, Arguments... arguments) {
    if (world_.storm.isRaging() && random_.onceIn(50)) test::failAllocationAfter(0);
    const auto answer = call(arguments...);
    test::allocationFailed();  // forgets an order that was not carried out
    return answer;
  }
  void noteAnswer(bool done, ObErrorRef error);

  World& world_;
  Random random_;
  Kept<MPIOLogicalUnitRef> units_;
  Kept<MPIOLogicalUnitPathRef> paths_;

 private:
  void listUnits();
  void listPaths();
  template <class CRef>
  void keepOne(ObArrayRef handles, Kept<CRef>& kept);
  template <class CRef>
  void copy(ObDictionaryRef (*copied)(CRef), CRef handle);
  void lookUp(MPIOLogicalUnitRef unit);
  void setAlgorithm(MPIOLogicalUnitRef unit);
  void setBatchCount(MPIOLogicalUnitRef unit);
  void setPath(MPIOLogicalUnitPathRef path);
  // isThere: whether the host has what the library says that it took.
  template <class IsThere, class Call, class... Arguments>
  void tryToChange(IsThere isThere, Call call, Arguments... arguments);
  // What the driver shows of the unit under that name.
  Words published(MPIOLogicalUnitRef unit, const ob::String& name);
};

// Registers for notifications in both forms, is told of what comes and goes, and gives up again, at
// times within a call.
class Listener final : Client {
 public:
  explicit Listener(World& world);
  void work();
  // On the same thread, when the storm is calm.
  void finish();
  // Returns when the queue has nothing to do.
  void settle() { onQueue_.settle(); }
  // Handles that stay with the host because a creation on the queue fails without undoing what it
  // did until then.
  std::size_t handlesLeft() const noexcept { return handlesLeft_; }

 private:
  void startOnQueue();
  void hear(const test::Event& event, test::NotificationClient& client);

  test::QueueClient onQueue_;
  test::RunLoopClient onLoop_;
  std::atomic<bool> endWithin_{false};  // the next call ends its own registration
  std::size_t handlesLeft_ = 0;
};

}  // namespace tavrenix::soak
