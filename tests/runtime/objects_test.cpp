// Reference counts, weak references, pools.
#include <gtest/gtest.h>
#include <tavrenix/ob.h>

#include <thread>

#include "runtime/atomic_ref.hpp"
#include "runtime/pool.hpp"
#include "runtime/weak.hpp"

namespace {

class Probe final : public ob::Object {
 public:
  explicit Probe(std::atomic<int>& alive) : alive_(alive) { ++alive_; }
  ~Probe() override { --alive_; }
  ob::TypeID typeID() const noexcept override { return ob::kNoType; }
  ob::WeakAnchor<Probe> anchor{this};

 private:
  std::atomic<int>& alive_;  // probes may end on another thread than they began
};

TEST(Objects, EndWithTheirLastReference) {
  std::atomic<int> alive{0};
  auto first = ob::make<Probe>(alive);
  {
    const auto second = first;
    EXPECT_EQ(first->retainCount(), 2u);
    const auto third = ob::Ref<Probe>::retain(second.get());
    EXPECT_EQ(first->retainCount(), 3u);
  }
  Probe* raw = first.detach();
  EXPECT_EQ(alive, 1);
  EXPECT_FALSE(first);
  raw->release();
  EXPECT_EQ(alive, 0);
}

TEST(Objects, WeakReferencesRaceWithTheEndOfTheTarget) {
  std::atomic<int> alive{0};
  for (int round = 0; round < 200; ++round) {
    auto target = ob::make<Probe>(alive);
    const auto cell = target->anchor.cell();
    EXPECT_EQ(cell->load(), target);
    std::thread reader([&] {
      while (const auto held = cell->load()) EXPECT_GE(held->retainCount(), 1u);
    });
    target = nullptr;
    reader.join();  // which read none
  }
  EXPECT_EQ(alive, 0);
}

TEST(Objects, AtomicReferencesHandOutWholeObjects) {
  std::atomic<int> alive{0};
  ob::AtomicRef<Probe> field;
  std::thread writer([&] {
    for (int round = 0; round < 2000; ++round) field.store(ob::make<Probe>(alive));
  });
  for (int round = 0; round < 2000; ++round) {
    if (const auto held = field.load()) {
      EXPECT_EQ(held->anchor.cell()->load(), held);
    }
  }
  writer.join();
  field.store(nullptr);
  EXPECT_EQ(alive, 0);
}

TEST(Pools, KeepUntilDrainedAlsoOutOfOrder) {
  std::atomic<int> alive{0};
  auto outer = std::make_unique<ob::Pool>();
  const Probe* early = ob::Pool::keep(ob::make<Probe>(alive));
  auto inner = ObPoolCreate();
  ob::Pool::keep(ob::make<Probe>(alive));
  EXPECT_EQ(alive, 2);
  ObPoolDrain(inner);
  EXPECT_EQ(alive, 1);
  EXPECT_EQ(early->retainCount(), 1u);
  inner = ObPoolCreate();
  outer.reset();
  EXPECT_EQ(alive, 0);
  ob::Pool::keep(ob::make<Probe>(alive));  // into inner, which is still there
  EXPECT_EQ(alive, 1);
  ObPoolDrain(inner);
  ObPoolDrain(nullptr);
  EXPECT_EQ(alive, 0);
}

TEST(Pools, AThreadWithoutOneKeepsUntilItEndsAndStillLendsThen) {
  std::atomic<int> alive{0};
  int during = -1;
  const Probe* borrowed = nullptr;
  struct AtEnd {
    ~AtEnd() { borrowed = ob::Pool::keep(ob::make<Probe>(alive)); }
    std::atomic<int>& alive;
    const Probe*& borrowed;
  };
  std::thread([&] {
    thread_local AtEnd later{alive, borrowed};  // ends after the thread's own pool
    static_cast<void>(later);
    ob::Pool::keep(ob::make<Probe>(alive));
    during = alive;
  }).join();
  EXPECT_EQ(during, 1);
  EXPECT_EQ(alive, 1);
  ASSERT_NE(borrowed, nullptr);
  borrowed->release();
  EXPECT_EQ(alive, 0);
}

}  // namespace
