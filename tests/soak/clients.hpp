// The three kinds of client. Each works on a thread of its own, one call at a time, with handles
// that it keeps for a while, also when their devices are gone by then.
#pragma once

#include "tests/library/notification_clients.hpp"
#include "tests/soak/world.hpp"

namespace tavrenix::soak {

// Some handles, the oldest given up for the newest.
template <class CRef>
class Kept {
 public:
  void add(CRef handle) {
    if (handle != nullptr) {
      place_[next_++ % kPlaces] = test::Owned<CRef>(static_cast<CRef>(ObRetain(handle)));
    }
  }
  // Null as long as that place is empty.
  CRef draw(Random& random) const { return place_[random.below(kPlaces)].get(); }

 private:
  static constexpr std::size_t kPlaces = 8;
  std::array<test::Owned<CRef>, kPlaces> place_;
  std::size_t next_ = 0;
};

class Client {
 public:
  Client(World& world, Turns& turns, Random random)
      : world_(world), turns_(turns), random_(random) {}
  virtual ~Client() = default;
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  // One operation, as drawn.
  virtual void work() = 0;
  // On the same thread, when the work is over and the storm is calm.
  virtual void finish() {}

 protected:
  void listUnits();
  void listPaths();
  void note(const std::optional<std::string>& fault, std::uint64_t answer);

  World& world_;
  Turns& turns_;
  Random random_;
  Kept<MPIOLogicalUnitRef> units_;
  Kept<MPIOLogicalUnitPathRef> paths_;
};

// Lists, and copies properties and statistics.
class Lister final : public Client {
 public:
  using Client::Client;
  void work() override;
};

// Changes algorithm, batch count and path states.
class Changer final : public Client {
 public:
  using Client::Client;
  void work() override;

 private:
  void changeUnit(MPIOLogicalUnitRef unit);
  void changePath(MPIOLogicalUnitPathRef path);
};

// Registers for notifications in both forms, is told of what comes and goes, and gives up again, at
// times within a call.
class Listener final : public Client {
 public:
  Listener(World& world, Turns& turns, Random random);
  void work() override;
  void finish() override;
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
