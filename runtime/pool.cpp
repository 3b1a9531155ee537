#include "runtime/pool.hpp"

namespace ob {

namespace {

thread_local Pool* innermost = nullptr;

// Makes the base pool of the thread on the first call. Later calls do nothing, even if the base
// pool is gone: a destructor that runs late in the thread's exit may call this.
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
    // The base pool has ended before its thread. The caller may still use the object, so leak it.
    static_cast<void>(object.detach());
    return;
  }
  innermost->objects_.push_back(std::move(object));
}

}  // namespace ob
