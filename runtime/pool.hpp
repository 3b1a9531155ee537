// Scratch pools, which keep temporary objects alive until the pool ends.
//
// Each thread has a stack of pools. Below them lies a base pool, which lives as long as the thread,
// so that an object kept outside every other pool is freed at the end of the thread.
// Thread safety: a pool is made, filled and destroyed on one thread.
#pragma once

#include <vector>

#include "runtime/object.hpp"

namespace ob {

class Pool {
 public:
  // Makes this the innermost pool of the thread.
  Pool() noexcept;
  // Releases the objects of the pool. The pool need not be the innermost: it is then taken out of
  // the middle of the stack.
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  // Moves the reference into the innermost pool of the thread and returns the object, borrowed
  // from that pool.
  template <class T>
  static T* keep(Ref<T> object) {
    T* borrowed = object.get();
    keepObject(std::move(object));
    return borrowed;
  }

 private:
  static void keepObject(Ref<const Object> object);

  Pool* below_;
  std::vector<Ref<const Object>> objects_;
};

}  // namespace ob
