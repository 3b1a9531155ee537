#include "runtime/pool.hpp"

namespace ob {

namespace {

thread_local Pool* innermost = nullptr;

// The pool below all others, made when a thread first needs it. It is not made again once the
// thread's end has taken it away.
void makeBasePool() {
  thread_local bool made = false;
  if (std::exchange(made, true)) return;
  thread_local Pool base;
}

}  // namespace

Pool::Pool() noexcept : below_(innermost) {
  innermost = this;
}

Pool::~Pool() {
  Pool** link = &innermost;
  while (*link != nullptr && *link != this) link = &(*link)->below_;
  if (*link == this) *link = below_;
}

void Pool::keepObject(Ref<const Object> object) {
  if (innermost == nullptr) makeBasePool();
  if (innermost == nullptr) {
    // Asked for by something that outlives the thread's own pool: lost rather than freed too early.
    static_cast<void>(object.detach());
    return;
  }
  innermost->objects_.push_back(std::move(object));
}

}  // namespace ob
