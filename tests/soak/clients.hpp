// The three kinds of client. Each works on one thread, one call at a time, with handles that it
// keeps for a while, also when their devices are gone by then.
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

class Client {
 protected:
  Client(World& world, Stream stream) : world_(world), random_(world.seed, stream) {}

  // What the call answers, at times where its first allocation fails: that of its scratch pool.
  template <class Call, class... Arguments>
  auto ask(Call call, Arguments... arguments) {
    if (world_.storm.isRaging() && random_.onceIn(50)) test::failAllocationAfter(0);
    const auto answer = call(arguments...);
    test::allocationFailed();  // forgets an order that was not carried out
    return answer;
  }
  MPIOLogicalUnitRef drawUnit() { return random_.oneOf(units_).get(); }
  MPIOLogicalUnitPathRef drawPath() { return random_.oneOf(paths_).get(); }
  void listUnits();
  void listPaths();
  void noteAnswer(bool done, ObErrorRef error);

  World& world_;
  Random random_;
  Kept<MPIOLogicalUnitRef> units_;
  Kept<MPIOLogicalUnitPathRef> paths_;

 private:
  template <class CRef>
  void keepOne(ObArrayRef handles, Kept<CRef>& kept);
};

// Lists, and copies properties and statistics.
class Lister final : Client {
 public:
  explicit Lister(World& world) : Client(world, Stream::kLister) {}
  // One operation, as drawn; so it is with the others.
  void work();

 private:
  template <class CRef>
  void copy(ObDictionaryRef (*copied)(CRef), CRef handle);
  void lookUp(MPIOLogicalUnitRef unit);
};

// Changes algorithm, batch count and path states.
class Changer final : Client {
 public:
  explicit Changer(World& world) : Client(world, Stream::kChanger) {}
  void work();

 private:
  void setAlgorithm(MPIOLogicalUnitRef unit);
  void setBatchCount(MPIOLogicalUnitRef unit);
  void setPath(MPIOLogicalUnitPathRef path);
  // What the driver shows of the unit under that name.
  Words published(MPIOLogicalUnitRef unit, const ob::String& name);
  template <class IsThere, class Call, class... Arguments>
  void change(IsThere isThere, Call call, Arguments... arguments);
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
