// What happens when the library is loaded, before main, and when the process ends.
#include <cstdlib>

#include "library/manager.hpp"

namespace tavrenix {

namespace {

[[gnu::constructor]] void load() {
  MPIOLogicalUnit::getTypeID();  // registers the class
  MPIOLogicalUnitPath::getTypeID();
  MPIOManagerInitialize();
  std::atexit([] { MPIOManagerTeardown(); });
}

}  // namespace

}  // namespace tavrenix
