// Error objects: the message as domain, a code, and optional user information.
#pragma once

#include "runtime/collections.hpp"

namespace ob {

class Error final : public Object {
 public:
  static constexpr TypeID kType = kErrorType;
  // userInfo may be none.
  Error(Ref<const String> domain, std::int64_t code, Ref<const Dictionary> userInfo) noexcept
      : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}
  const String& domain() const noexcept { return *domain_; }
  std::int64_t code() const noexcept { return code_; }
  const Dictionary* userInfo() const noexcept { return userInfo_.get(); }

  // One line for a person: the domain, then the code and the first number of the user information.
  Ref<String> description() const;

  TypeID typeID() const noexcept override { return kType; }

 private:
  Ref<const String> domain_;
  std::int64_t code_;
  Ref<const Dictionary> userInfo_;
};

}  // namespace ob
