// tavrenix-lab-watch: examples/watch.c on a host that is an image file.
#include <cstdio>
#include <exception>
#include <string_view>

#include "lab/fault.hpp"
#include "lab/follower.hpp"

extern "C" int tavrenixWatchMain(void);

namespace {

constexpr int kBadUse = 2;

constexpr char kHelp[] =
    "usage: tavrenix-lab-watch IMAGE\n"
    "       tavrenix-lab-watch --help | --version\n"
    "\n"
    "Prints a line for each logical unit and path that is in IMAGE or comes into it, and for each\n"
    "that goes out of it, until it is ended with Ctrl-C. This is a simulation: no device of this\n"
    "machine is looked at. Change IMAGE with `tavrenix-lab IMAGE modify ...` or with an editor. A\n"
    "file that is bad at that moment is reported once, and the last good state stays.\n"
    "\n"
    "Exit status: 2 where IMAGE is missing or cannot be used.\n";

void complain(std::string_view line) {
  std::fprintf(stderr, "tavrenix-lab-watch: %.*s\n", static_cast<int>(line.size()), line.data());
}

// The exit status: not 0 where the text did not arrive, as on a full disk.
int show(const char* text) {
  return std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
}

int run(int argc, char** argv) {
  const std::string_view first = argc < 2 ? "" : argv[1];
  if (first == "--help" || first == "-h") return show(kHelp);
  if (first == "--version") return show("tavrenix-lab-watch " TAVRENIX_VERSION "\n");
  if (argc != 2 || first.empty()) {
    std::fputs(kHelp, stderr);
    return kBadUse;
  }
  if (first.starts_with('-')) {
    complain("unknown option " + tavrenix::lab::printable(first) +
             "; see tavrenix-lab-watch --help");
    return kBadUse;
  }
  const tavrenix::lab::Follower follower(tavrenix::lab::simulatedHost(), argv[1], complain);
  return tavrenixWatchMain();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    complain(error.what());
    return kBadUse;
  }
}
