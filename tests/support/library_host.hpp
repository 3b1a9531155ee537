// The host of test programs that link the whole library, which tests exchange for a new one.
#pragma once

#include "library/manager.hpp"
#include "tests/support/sample_storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {

// Makes the library use a host until the end of the scope. The manager starts again.
class UnderLibrary {
 public:
  explicit UnderLibrary(MPIOHost& host);
  ~UnderLibrary();
  UnderLibrary(const UnderLibrary&) = delete;
  UnderLibrary& operator=(const UnderLibrary&) = delete;
};

// Makes the library use a new host, which counts operations and fails them on request.
class LibraryHost {
 public:
  LibraryHost() { host_.watch.reset(); }
  WatchedHost* operator->() noexcept { return &host_; }

 private:
  WatchedHost host_;
  UnderLibrary under_{host_};
};

}  // namespace tavrenix::test
