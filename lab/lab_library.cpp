// The library on a simulated host: the image is the file that an environment variable names.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "lab/simulated_host.hpp"

// Loads the image before main. Without the variable the host has no storage. If the image cannot be
// used, ends the process: a client would otherwise see a host without storage.
[[gnu::constructor]] static void loadImage() {
  constexpr int kBadUse = 2;
  const char* image = std::getenv("TAVRENIX_LAB_IMAGE");
  if (image == nullptr) return;
  try {
    for (const std::string& warning : tavrenix::lab::simulatedHost().load(image))
      std::fprintf(stderr, "TAVRENIX_LAB_IMAGE: %s\n", warning.c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "TAVRENIX_LAB_IMAGE: %s\n", error.what());
    ::_exit(kBadUse);
  }
}
