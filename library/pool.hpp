// The scratch pool of one library call.
#pragma once

#include <memory>

#include "runtime/pool.hpp"

namespace tavrenix {

// A pool for the temporary objects of a call, drained when it goes. None where it cannot be made:
// the call then returns its failure value.
inline std::unique_ptr<ob::Pool> MPIOScratchPoolCreate() noexcept {
  try {
    return std::make_unique<ob::Pool>();
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace tavrenix
