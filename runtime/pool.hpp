// Scratch pools: where temporary objects live until the pool is drained.
//
// Each thread has a stack of pools, and below them one of its own that is drained when the thread
// ends, so that a temporary object made without a pool is neither lost nor freed too early. A pool
// is made, filled and drained on one thread.
#pragma once

#include <vector>

#include "runtime/object.hpp"

namespace ob {

class Pool {
 public:
  // Becomes the thread's innermost pool.
  Pool() noexcept;
  // Releases what it holds. Pools end in the reverse order of their making; where one does not, it
  // is taken out of the middle.
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  // Puts the reference into the thread's innermost pool and returns the object, borrowed from it.
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
