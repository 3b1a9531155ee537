// The error of the changes that one command makes.
#pragma once

#include <tavrenix/ob.h>

#include <optional>
#include <string>

#include "cli/owned.hpp"
#include "cli/text.hpp"

namespace tavrenix::cli {

/// Holds the last error that a change told. A change that fails without an error leaves the earlier
/// one in place, so that it is told again for the later change: users have always been shown it.
class ErrorSlot {
 public:
  /// change: bool(ObErrorRef*), a call of the library. Returns what it returns.
  template <typename Change>
  bool attempt(Change change) {
    ObErrorRef fresh = nullptr;
    const bool done = change(&fresh);
    if (fresh != nullptr) error_.reset(fresh);
    return done;
  }

  bool empty() const { return error_ == nullptr; }

  /// Nothing where there is no error, or one without description.
  std::optional<std::string> description() const {
    const Owned<ObStringRef> text(ObErrorCopyDescription(error_.get()));
    return asciiText(text.get());
  }

 private:
  Owned<ObErrorRef> error_;
};

}  // namespace tavrenix::cli
