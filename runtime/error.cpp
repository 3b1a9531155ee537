#include "runtime/error.hpp"

#include <cstdio>
#include <string>

#include "runtime/values.hpp"

namespace ob {

Ref<String> Error::description() const {
  char numbers[64];
  std::snprintf(numbers, sizeof numbers, " (error 0x%08llX",
                static_cast<unsigned long long>(code_));
  std::string text = std::string(domain_->view()) + numbers;
  if (userInfo_) {
    for (const auto& [key, value] : userInfo_->pairs()) {
      const auto* number = as<Number>(value.get());
      if (number == nullptr) continue;
      text += ", result " + std::to_string(number->asInt64().value_or(0));
      break;
    }
  }
  return String::make(text + ")");
}

}  // namespace ob
