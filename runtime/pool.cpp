#include "runtime/pool.hpp"

namespace ob {

namespace {

thread_local Pool* innermost = nullptr;

// The pool below all others, made when a thread first needs it.
void makeBasePool() {
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
  innermost->objects_.push_back(std::move(object));
}

}  // namespace ob
