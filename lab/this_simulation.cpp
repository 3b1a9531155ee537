// The host of the process in every program of the lab: the simulated one.
#include <cstdio>

#include "lab/simulated_host.hpp"

namespace tavrenix {

lab::SimulatedHost& lab::simulatedHost() {
  // Never destroyed, because the library's exit handler still uses it.
  static SimulatedHost& host = *new SimulatedHost([](std::string_view line) {
    std::fprintf(stderr, "tavrenix-lab: %.*s\n", static_cast<int>(line.size()), line.data());
  });
  return host;
}

MPIOHost& sharedHost() {
  return lab::simulatedHost().memory();
}

}  // namespace tavrenix
