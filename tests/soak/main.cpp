// soak_tests [--seed N] [--operations N] [GoogleTest's options]
#include <charconv>
#include <cstdio>
#include <cstring>

#include "tests/soak/soak.hpp"

namespace tavrenix::soak {

Settings& settings() {
  static Settings its;
  return its;
}

namespace {

bool takeNumber(const char* text, std::uint64_t& number) {
  const char* end = text + std::strlen(text);
  const auto [stopped, error] = std::from_chars(text, end, number);
  return error == std::errc() && stopped == end;
}

bool takeArguments(int argc, char** argv) {
  for (int i = 1; i < argc; i += 2) {
    const std::string_view option = argv[i];
    if (i + 1 == argc) return false;
    if (option == "--seed" && takeNumber(argv[i + 1], settings().seed)) continue;
    if (option == "--operations" && takeNumber(argv[i + 1], settings().operations)) continue;
    return false;
  }
  return true;
}

}  // namespace

}  // namespace tavrenix::soak

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!tavrenix::soak::takeArguments(argc, argv)) {
    std::fputs("usage: soak_tests [--seed N] [--operations N]\n", stderr);
    return 2;
  }
  return RUN_ALL_TESTS();
}
