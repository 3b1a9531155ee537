#include "runtime/object.hpp"

#include <cstdio>
#include <cstdlib>

namespace ob {

TypeID registerClass() {
  static std::atomic<TypeID> next{kFirstRegisteredType};
  return next.fetch_add(1, std::memory_order_relaxed);
}

void Object::release() const noexcept {
  if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

bool Object::tryRetain() const noexcept {
  std::uint32_t count = count_.load(std::memory_order_relaxed);
  while (count != 0) {
    if (count_.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) return true;
  }
  return false;
}

void fatal(std::string_view message) noexcept {
  std::fprintf(stderr, "tavrenix: fatal: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace ob
