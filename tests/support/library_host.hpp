// The host of test programs that link the whole library: one that tests exchange for a new one each
// time.
#pragma once

#include <memory>

#include "library/manager.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {

// Puts a host of its own under the library for as long as it lives, with a manager that starts
// afresh.
class LibraryHost {
 public:
  LibraryHost();
  ~LibraryHost();
  LibraryHost(const LibraryHost&) = delete;
  LibraryHost& operator=(const LibraryHost&) = delete;

  WatchedHost& operator*() const noexcept { return *host_; }
  WatchedHost* operator->() const noexcept { return host_.get(); }

 private:
  std::unique_ptr<WatchedHost> host_;
};

}  // namespace tavrenix::test
