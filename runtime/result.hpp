// The answer of the host or of its kernel to a question: a status, and a value if that is 0.
#pragma once

#include <cstdint>

namespace ob {

template <class T>
struct Result {
  // 0 is success. Any other number is the host's own and is passed on to the user. The project's
  // own hosts use negative error numbers.
  std::int32_t status = 0;
  T value{};  // meaningful only if status is 0
};

}  // namespace ob
