// Gives the library for tests its storage: the image that the variable names, before main.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "lab/host.hpp"

namespace {

[[gnu::constructor]] void loadImage() {
  const char* image = std::getenv("TAVRENIX_TEST_IMAGE");
  if (image == nullptr) return;
  try {
    tavrenix::lab::simulatedHost().load(image);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "TAVRENIX_TEST_IMAGE: %s\n", error.what());
    std::abort();
  }
}

}  // namespace
