#include "tests/support/library_host.hpp"

namespace tavrenix {

namespace {

// Without storage, and there for exit handlers.
MPIOHost& noStorage() {
  static auto& host = *new test::WatchedHost;
  return host;
}

MPIOHost*& current() {
  static MPIOHost* shared = &noStorage();
  return shared;
}

}  // namespace

MPIOHost& sharedHost() {
  return *current();
}

namespace test {

UnderLibrary::UnderLibrary(MPIOHost& host) {
  MPIOManagerTeardown();
  current() = &host;
  MPIOManagerInitialize();
}

UnderLibrary::~UnderLibrary() {
  MPIOManagerTeardown();
  current() = &noStorage();
}

}  // namespace test

}  // namespace tavrenix
