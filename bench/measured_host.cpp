#include "bench/measured_host.hpp"

#include "library/manager.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix {

namespace {

memory::MemoryHost*& current() {
  static auto* host = new memory::MemoryHost;
  return host;
}

}  // namespace

MPIOHost& sharedHost() {
  return *current();
}

namespace bench {

memory::MemoryHost& hostWith(std::uint64_t units, std::uint64_t paths) {
  static std::uint64_t madeUnits = 0, madePaths = 0;
  if (madeUnits != units || madePaths != paths) {
    MPIOManagerTeardown();
    delete current();
    current() = new memory::MemoryHost;
    test::addStorage(*current(), {.units = units, .paths = paths, .volumes = 1});
    MPIOManagerInitialize();
    madeUnits = units;
    madePaths = paths;
  }
  return *current();
}

}  // namespace bench

}  // namespace tavrenix
