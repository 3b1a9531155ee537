// What the command line asks of a soak.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

namespace tavrenix::soak {

struct Settings {
  std::uint64_t seed = 1;
  std::uint64_t operations = 1'000'000;
};
Settings& settings();

}  // namespace tavrenix::soak
