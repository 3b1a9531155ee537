// The host of test programs that link the whole library: one that tests exchange for a new one each
// time.
#pragma once

#include <memory>

#include "library/manager.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {

// Puts a host under the library for as long as it lives, with a manager that starts afresh.
class UnderLibrary {
 public:
  explicit UnderLibrary(MPIOHost& host);
  ~UnderLibrary();
  UnderLibrary(const UnderLibrary&) = delete;
  UnderLibrary& operator=(const UnderLibrary&) = delete;
};

// The same with a host of its own.
class LibraryHost {
 public:
  LibraryHost() { host_->watch.reset(); }

  WatchedHost& operator*() const noexcept { return *host_; }
  WatchedHost* operator->() const noexcept { return host_.get(); }

 private:
  std::unique_ptr<WatchedHost> host_ = std::make_unique<WatchedHost>();
  UnderLibrary under_{*host_};
};

}  // namespace tavrenix::test
