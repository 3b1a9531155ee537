// A notification port by itself: what is posted before it is bound, while it is, and after its end.
#include "model/notification_port.hpp"

#include <gtest/gtest.h>

#include "runtime/string.hpp"

namespace tavrenix {
namespace {

class Port : public testing::Test {
 protected:
  ~Port() override { port->destroy(); }
  void post() {
    port->post([this] { ++calls; });
  }

  ob::Ref<NotificationPort> port = ob::make<NotificationPort>();
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("test");
  ob::RunLoop& loop = ob::RunLoop::current();
  const ob::String& mode = ob::kDefaultMode;
  int calls = 0;  // on the queue; read when it has drained
};

TEST_F(Port, KeepsWhatIsPostedBeforeItIsBoundToAQueue) {
  post();
  post();
  queue->drain();
  EXPECT_EQ(calls, 0);
  port->setDispatchQueue(*queue);
  queue->drain();
  EXPECT_EQ(calls, 2);
  post();
  queue->drain();
  EXPECT_EQ(calls, 3);
}

TEST_F(Port, KeepsWhatIsPostedBeforeItsSourceIsMade) {
  post();
  post();
  const auto source = port->runLoopSource();
  EXPECT_EQ(port->runLoopSource(), source) << "the same at every call";
  loop.add(*source, mode);
  EXPECT_TRUE(loop.performDue(mode));
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(loop.performDue(mode)) << "nothing is left to tell";
  post();
  EXPECT_TRUE(loop.performDue(mode));
  EXPECT_EQ(calls, 3);
  source->invalidate();
}

TEST_F(Port, OnceDestroyedTakesTellsAndHoldsNothing) {
  const auto source = port->runLoopSource();
  loop.add(*source, mode);
  EXPECT_FALSE(loop.performDue(mode)) << "nothing waits";
  const auto uses = source->retainCount();
  auto held = std::make_shared<int>(0);
  port->post([held] { ++*held; });
  EXPECT_EQ(held.use_count(), 2);
  EXPECT_FALSE(port->isDestroyed());
  port->destroy();
  EXPECT_TRUE(port->isDestroyed());
  EXPECT_EQ(source->retainCount(), uses - 1);
  EXPECT_FALSE(port->runLoopSource());
  port->post([held] { ++*held; });
  EXPECT_EQ(held.use_count(), 1);
  loop.performDue(mode);
  EXPECT_EQ(*held, 0);
  source->invalidate();

  const auto bound = ob::make<NotificationPort>();
  bound->setDispatchQueue(*queue);
  EXPECT_EQ(queue->retainCount(), 2u);
  bound->destroy();
  bound->setDispatchQueue(*queue);
  EXPECT_EQ(queue->retainCount(), 1u);
}

}  // namespace
}  // namespace tavrenix
