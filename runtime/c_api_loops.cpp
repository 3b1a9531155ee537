// The C face of dispatch queues and run loops.
#include <tavrenix/ob.h>

#include <new>
#include <system_error>

#include "runtime/c_bridge.hpp"
#include "runtime/dispatch_queue.hpp"
#include "runtime/run_loop.hpp"

using ob::fromC;
using ob::toC;

namespace {

// The object behind a C reference where it is a T, to be changed; null otherwise.
template <class T>
T* changeable(void* reference) noexcept {
  return const_cast<T*>(fromC<T>(reference));
}

template <class CRef>
CRef changeableToC(ob::Object* object) noexcept {
  return static_cast<CRef>(static_cast<void*>(object));
}

// What call returns, or failure where memory or another resource of the host ran out.
template <class Result, class Call>
Result orFailure(Result failure, Call call) noexcept {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return failure;
  } catch (const std::system_error&) {
    return failure;
  }
}

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
    context_.schedule(context_.info, changeableToC<ObRunLoopRef>(&loop), toC<ObStringRef>(&mode));
  }
  void cancel(ob::RunLoop& loop, const ob::String& mode) override {
    if (context_.cancel == nullptr) return;
    context_.cancel(context_.info, changeableToC<ObRunLoopRef>(&loop), toC<ObStringRef>(&mode));
  }
  void perform() override {
    if (context_.perform != nullptr) context_.perform(context_.info);
  }

 private:
  const ObRunLoopSourceContext context_;
};

// The three arguments of a call on a loop's sources; none where one of them is not what it should
// be.
struct Place {
  Place(ObRunLoopRef itsLoop, ObRunLoopSourceRef itsSource, ObStringRef itsMode) noexcept
      : loop(changeable<ob::RunLoop>(itsLoop)),
        source(changeable<ob::RunLoopSource>(itsSource)),
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
  return orFailure<ObDispatchQueueRef>(nullptr, [&] {
    auto queue = ob::make<ob::DispatchQueue>(label == nullptr ? "" : label);
    return changeableToC<ObDispatchQueueRef>(queue.detach());
  });
}

bool ObDispatchAsync(ObDispatchQueueRef queue, ObDispatchFunction function, void* context) {
  auto* known = changeable<ob::DispatchQueue>(queue);
  if (known == nullptr || function == nullptr) return false;
  return orFailure(false, [&] {
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
  return orFailure<ObRunLoopRef>(
      nullptr, [] { return changeableToC<ObRunLoopRef>(&ob::RunLoop::current()); });
}

ObRunLoopSourceRef ObRunLoopSourceCreate(const ObRunLoopSourceContext* context) {
  if (context == nullptr) return nullptr;
  return orFailure<ObRunLoopSourceRef>(nullptr, [&] {
    return changeableToC<ObRunLoopSourceRef>(ob::make<ContextSource>(*context).detach());
  });
}

void ObRunLoopSourceSignal(ObRunLoopSourceRef source) {
  if (auto* known = changeable<ob::RunLoopSource>(source)) known->signal();
}

void ObRunLoopSourceInvalidate(ObRunLoopSourceRef source) {
  if (auto* known = changeable<ob::RunLoopSource>(source)) known->invalidate();
}

bool ObRunLoopSourceIsValid(ObRunLoopSourceRef source) {
  const auto* known = fromC<ob::RunLoopSource>(source);
  return known != nullptr && known->isValid();
}

bool ObRunLoopAddSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Place place(loop, source, mode);
  return place && orFailure(false, [&] { return place.loop->add(*place.source, *place.mode); });
}

bool ObRunLoopRemoveSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Place place(loop, source, mode);
  return place && place.loop->remove(*place.source, *place.mode);
}

bool ObRunLoopContainsSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode) {
  const Place place(loop, source, mode);
  return place && place.loop->contains(*place.source, *place.mode);
}

void ObRunLoopRun(void) {
  ObRunLoopRunInMode(kObRunLoopDefaultMode, ob::RunLoop::kForever);
}

ObRunLoopResult ObRunLoopRunInMode(ObStringRef mode, double seconds) {
  const auto* known = fromC<ob::String>(mode);
  if (known == nullptr) return kObRunLoopFinished;
  return orFailure(kObRunLoopFinished, [&] {
    return static_cast<ObRunLoopResult>(ob::RunLoop::current().run(*known, seconds));
  });
}

void ObRunLoopStop(ObRunLoopRef loop) {
  if (auto* known = changeable<ob::RunLoop>(loop)) known->stop();
}

void ObRunLoopWakeUp(ObRunLoopRef loop) {
  if (auto* known = changeable<ob::RunLoop>(loop)) known->wakeUp();
}

int ObRunLoopGetDescriptor(ObRunLoopRef loop) {
  const auto* known = fromC<ob::RunLoop>(loop);
  return known == nullptr ? -1 : known->descriptor();
}

bool ObRunLoopPerformDue(ObStringRef mode) {
  const auto* known = fromC<ob::String>(mode);
  if (known == nullptr) return false;
  return orFailure(false, [&] { return ob::RunLoop::current().performDue(*known); });
}

}  // extern "C"
