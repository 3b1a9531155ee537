#include "tests/support/library_host.hpp"

namespace tavrenix {

namespace {

test::WatchedHost*& current() {
  static auto* const noStorage = new test::WatchedHost;
  static test::WatchedHost* shared = noStorage;
  return shared;
}

}  // namespace

MPIOHost& sharedHost() {
  return *current();
}

namespace test {

LibraryHost::LibraryHost() : host_(std::make_unique<WatchedHost>()) {
  MPIOManagerTeardown();
  current() = host_.get();
  MPIOManagerInitialize();
  host_->watch.reset();
}

LibraryHost::~LibraryHost() {
  MPIOManagerTeardown();
  static auto* const noStorage = new WatchedHost;
  current() = noStorage;
}

}  // namespace test

}  // namespace tavrenix
