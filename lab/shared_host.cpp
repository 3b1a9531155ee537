#include <cstdio>

#include "lab/host.hpp"

namespace tavrenix {

lab::SimulatedHost& lab::simulatedHost() {
  // Never destroyed: the library's teardown among the exit handlers still uses it.
  static SimulatedHost& host = *new SimulatedHost([](std::string_view line) {
    std::fprintf(stderr, "tavrenix-lab: %.*s\n", static_cast<int>(line.size()), line.data());
  });
  return host;
}

MPIOHost& sharedHost() {
  return lab::simulatedHost().memory();
}

}  // namespace tavrenix
