// The C face of dispatch queues and run loops.
#include <tavrenix/ob.h>

#include "runtime/c/c_bridge.hpp"
#include "runtime/dispatch_queue.hpp"
#include "runtime/exhaustion.hpp"
#include "runtime/run_loop.hpp"

using ob::catchExhaustion;
using ob::fromC;
using ob::toC;

namespace {

// A run-loop source that calls the functions of a client.
class ContextSource final : public ob::RunLoopSource {
 public:
  explicit ContextSource(const ObRunLoopSourceContext& context) : context_(context) {
    if (context_.retain != nullptr) context_.retain(context_.info);
  }
  ~ContextSource() override {
    if (context_.release != nullptr) context_.release(context_.info);
  }

 protected:
  void schedule(ob::RunLoop& loop, const ob::String& mode) override {
    if (context_.schedule == nullptr) return;
    context_.schedule(context_.info, toC<ObRunLoopRef>(&loop), toC<ObStringRef>(&mode));
  }
  void cancel(ob::RunLoop& loop, const ob::String& mode) override {
    if (context_.cancel == nullptr) return;
    context_.cancel(context_.info, toC<ObRunLoopRef>(&loop), toC<ObStringRef>(&mode));
  }
  void perform() override {
    if (context_.perform != nullptr) context_.perform(context_.info);
  }

 private:
  const ObRunLoopSourceContext context_;
};

// The arguments of a call about a source in a loop. Converts to false if one of them is null or of
// the wrong kind.
struct Membership {
  Membership(ObRunLoopRef itsLoop, ObRunLoopSourceRef itsSource, ObStringRef itsMode) noexcept
      : loop(fromC<ob::RunLoop>(itsLoop)),
        source(fromC<ob::RunLoopSource>(itsSource)),
        mode(fromC<ob::String>(itsMode)) {}
  explicit operator bool() const noexcept {
    return loop != nullptr && source != nullptr && mode != nullptr;
  }
  ob::RunLoop* loop;
  ob::RunLoopSource* source;
  const ob::String* mode;
};

}  // namespace

extern "C" {

ObTypeID ObDispatchQueueGetTypeID(void) {
  return ob::kDispatchQueueType;
}

ObDispatchQueueRef ObDispatchQueueCreate(const char* label) {
  return catchExhaustion<ObDispatchQueueRef>(nullptr, [&] {
    auto queue = ob::make<ob::DispatchQueue>(label == nullptr ? "" : label);
    return toC<ObDispatchQueueRef>(queue.detach());
  });
}

bool ObDispatchAsync(ObDispatchQueueRef queue, ObDispatchFunction function, void* context) {
  auto* known = fromC<ob::DispatchQueue>(queue);
  if (known == nullptr || function == nullptr) return false;
  return catchExhaustion(false, [&] {
    known->async([function, context] { function(context); });
    return true;
  });
}

bool ObDispatchQueueDrain(ObDispatchQueueRef queue) {
  const auto* known = fromC<ob::DispatchQueue>(queue);
  return known != nullptr && known->drain();
}

const ObStringRef kObRunLoopDefaultMode = reinterpret_cast<ObStringRef>(&ob::kDefaultModeStorage);

ObTypeID ObRunLoopGetTypeID(void) {
  return ob::kRunLoopType;
}

ObTypeID ObRunLoopSourceGetTypeID(void) {
  return ob::kRunLoopSourceType;
}

ObRunLoopRef ObRunLoopGetCurrent(void) {
  return catchExhaustion<ObRunLoopRef>(nullptr,
                                       [] { return toC<ObRunLoopRef>(&ob::RunLoop::current()); });
}

ObRunLoopSourceRef ObRunLoopSourceCreate(const ObRunLoopSourceContext* context) {
  if (context == nullptr) return nullptr;
  return catchExhaustion<ObRunLoopSourceRef>(
      nullptr, [&] { return toC<ObRunLoopSourceRef>(ob::make<ContextSource>(*context).detach()); });
}

void ObRunLoopSourceSignal(ObRunLoopSourceRef source) {
  if (auto* known = fromC<ob::RunLoopSource>(source)) known->signal();
}

void ObRunLoopSourceInvalidate(ObRunLoopSourceRef source) {
  if (auto* known = fromC<ob::RunLoopSource>(source)) known->invalidate();
}

bool ObRunLoopSourceIsValid(ObRunLoopSourceRef source) {
  const auto* known = fromC<ob::RunLoopSource>(source);
  return known != nullptr && known->isValid();
}

bool ObRunLoopAddSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Membership asked(loop, source, mode);
  return asked &&
         catchExhaustion(false, [&] { return asked.loop->add(*asked.source, *asked.mode); });
}

bool ObRunLoopRemoveSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Membership asked(loop, source, mode);
  return asked && asked.loop->remove(*asked.source, *asked.mode);
}

bool ObRunLoopContainsSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Membership asked(loop, source, mode);
  return asked && asked.loop->contains(*asked.source, *asked.mode);
}

void ObRunLoopRun(void) {
  ObRunLoopRunInMode(kObRunLoopDefaultMode, ob::RunLoop::kForever);
}

ObRunLoopResult ObRunLoopRunInMode(ObStringRef mode, double seconds) {
  const auto* known = fromC<ob::String>(mode);
  if (known == nullptr) return kObRunLoopFinished;
  return catchExhaustion(kObRunLoopFinished, [&] {
    return static_cast<ObRunLoopResult>(ob::RunLoop::current().run(*known, seconds));
  });
}

void ObRunLoopStop(ObRunLoopRef loop) {
  if (auto* known = fromC<ob::RunLoop>(loop)) known->stop();
}

void ObRunLoopWakeUp(ObRunLoopRef loop) {
  if (auto* known = fromC<ob::RunLoop>(loop)) known->wakeUp();
}

int ObRunLoopGetDescriptor(ObRunLoopRef loop) {
  const auto* known = fromC<ob::RunLoop>(loop);
  return known == nullptr ? -1 : known->descriptor();
}

bool ObRunLoopPerformDue(ObStringRef mode) {
  const auto* known = fromC<ob::String>(mode);
  if (known == nullptr) return false;
  return catchExhaustion(false, [&] { return ob::RunLoop::current().performDue(*known); });
}

}  // extern "C"
