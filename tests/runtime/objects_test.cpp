// Reference counts, weak references, pools.
#include <gtest/gtest.h>

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

TEST(Objects, WeakReferencesReadAsNoneOnceTheTargetIsGone) {
  std::atomic<int> alive{0};
  auto target = ob::make<Probe>(alive);
  const auto cell = target->anchor.cell();
  EXPECT_EQ(cell->load(), target);
  target = nullptr;
  EXPECT_EQ(alive, 0);
  EXPECT_FALSE(cell->load());
}

TEST(Objects, WeakReferencesRaceWithTheEndOfTheTarget) {
  std::atomic<int> alive{0};
  for (int round = 0; round < 200; ++round) {
    auto target = ob::make<Probe>(alive);
    const auto cell = target->anchor.cell();
    std::thread reader([&] {
      while (const auto held = cell->load()) EXPECT_GE(held->retainCount(), 1u);
    });
    target = nullptr;
    reader.join();
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

TEST(Pools, KeepUntilDrained) {
  std::atomic<int> alive{0};
  {
    const ob::Pool outer;
    const Probe* early = ob::Pool::keep(ob::make<Probe>(alive));
    {
      const ob::Pool inner;
      ob::Pool::keep(ob::make<Probe>(alive));
      EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(early->retainCount(), 1u);
  }
  EXPECT_EQ(alive, 0);
}

TEST(Pools, MayEndOutOfOrder) {
  std::atomic<int> alive{0};
  auto outer = std::make_unique<ob::Pool>();
  auto inner = std::make_unique<ob::Pool>();
  outer.reset();
  ob::Pool::keep(ob::make<Probe>(alive));  // into inner, which is still there
  EXPECT_EQ(alive, 1);
  inner.reset();
  EXPECT_EQ(alive, 0);
}

TEST(Pools, AThreadWithoutOneKeepsUntilItEnds) {
  std::atomic<int> alive{0};
  int atEnd = -1;
  std::thread([&] {
    ob::Pool::keep(ob::make<Probe>(alive));
    atEnd = alive;
  }).join();
  EXPECT_EQ(atEnd, 1);
  EXPECT_EQ(alive, 0);
}

TEST(Pools, AThreadAtItsEndStillLendsWhatItKeeps) {
  std::atomic<int> alive{0};
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
  }).join();
  EXPECT_EQ(alive, 1);
  ASSERT_NE(borrowed, nullptr);
  borrowed->release();
  EXPECT_EQ(alive, 0);
}

}  // namespace
