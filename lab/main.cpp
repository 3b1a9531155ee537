// tavrenix-lab: the front end on a host that is an image file.
#include <cstdio>
#include <exception>
#include <string_view>
#include <vector>

#include "cli/main.hpp"
#include "lab/fault.hpp"
#include "lab/host.hpp"

namespace {

constexpr int kBadUse = 2;

constexpr char kHelp[] =
    "usage: tavrenix-lab IMAGE ARGUMENTS...\n"
    "       tavrenix-lab --help | --version\n"
    "\n"
    "Runs tavrenix with ARGUMENTS on a simulated host. This is a simulation: no device of this\n"
    "machine is looked at or changed. All that is shown is read from IMAGE, a JSON file, and\n"
    "what `modify` changes is written back into IMAGE and is there at the next call.\n"
    "\n"
    "Example, on a small image written by tavrenix-lab-generate (2 units of 3 paths each):\n"
    "\n"
    "  tavrenix-lab-generate 2 3 > try.json\n"
    "  tavrenix-lab try.json list\n"
    "  tavrenix-lab try.json info --id 600A0B80001122334455667700000001\n"
    "  tavrenix-lab try.json modify path --lun 600A0B80001122334455667700000001 --id 0101 "
    "--disable\n"
    "\n"
    "Exit status: 2 where IMAGE is missing or cannot be used, otherwise that of tavrenix.\n";

int complain(std::string_view line) {
  std::fprintf(stderr, "tavrenix-lab: %.*s\n", static_cast<int>(line.size()), line.data());
  return kBadUse;
}

// Not done where the text did not arrive, as on a full disk.
int show(const char* text) {
  const bool shown = std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0;
  return shown ? 0 : 1;
}

uid_t effectiveUser() {
  return tavrenix::sharedHost().effectiveUser();
}

int run(int argc, char** argv) {
  const std::string_view first = argc < 2 ? "" : argv[1];
  if (first.empty()) {
    std::fputs(kHelp, stderr);
    return kBadUse;
  }
  if (first == "--help" || first == "-h") return show(kHelp);
  if (first == "--version") return show("tavrenix-lab " TAVRENIX_VERSION "\n");
  if (first.starts_with('-')) {
    return complain("unknown option " + tavrenix::lab::printable(first) +
                    "; see tavrenix-lab --help");
  }
  tavrenix::lab::simulatedHost().load(argv[1]);
  std::vector<char*> arguments(argv, argv + argc + 1);  // with the null pointer at the end
  arguments.erase(arguments.begin() + 1);
  return tavrenixMain(argc - 1, arguments.data(), effectiveUser);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    return complain(error.what());
  }
}
