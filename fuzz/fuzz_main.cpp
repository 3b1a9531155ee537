#include <cstdint>

#include "fuzz/promise.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tavrenix::fuzz::run({reinterpret_cast<const char*>(data), size});
  return 0;
}
