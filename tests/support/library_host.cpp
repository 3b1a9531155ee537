#include "tests/support/library_host.hpp"

namespace tavrenix {

static MPIOHost* gUnder = nullptr;

// Without a host of a test's this is one without storage, which exit handlers find, too.
MPIOHost& sharedHost() {
  static MPIOHost& noStorage = *new test::WatchedHost;
  return gUnder == nullptr ? noStorage : *gUnder;
}

test::UnderLibrary::UnderLibrary(MPIOHost& host) {
  MPIOManagerTeardown();
  gUnder = &host;
  MPIOManagerInitialize();
}

test::UnderLibrary::~UnderLibrary() {
  MPIOManagerTeardown();
  gUnder = nullptr;
}

}  // namespace tavrenix
