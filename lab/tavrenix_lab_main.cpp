// tavrenix-lab: the front end on a simulated host, whose whole state is an image file.
#include <limits>

#include "cli/command.hpp"
#include "lab/lab_options.hpp"
#include "lab/simulated_host.hpp"

namespace {

using namespace tavrenix;

constexpr char kHelp[] =
    "usage: tavrenix-lab IMAGE ARGUMENTS...\n"
    "       tavrenix-lab --check IMAGE\n"
    "       tavrenix-lab --help | --version\n"
    "\n"
    "Runs tavrenix with ARGUMENTS on a simulated host. This is a simulation: it does not look at\n"
    "or change any device of this machine. Everything it shows comes from IMAGE, a JSON file, and\n"
    "`modify` writes its changes into IMAGE, where the next call finds them. If a part of IMAGE "
    "has\n"
    "no effect, such as a misspelt property, a warning names it. --check prints nothing but those\n"
    "warnings.\n"
    "\n"
    "Example, on a small image from tavrenix-lab-generate (2 units of 3 paths each):\n"
    "\n"
    "  tavrenix-lab-generate 2 3 > try.json\n"
    "  tavrenix-lab try.json list\n"
    "  tavrenix-lab try.json info --id 600A0B80001122334455667700000001\n"
    "  tavrenix-lab try.json modify path --lun 600A0B80001122334455667700000001 --id 0101 "
    "--disable\n"
    "\n"
    "Exit status: 2 if IMAGE is missing or unusable, or if --check finds something; otherwise "
    "that\n"
    "of tavrenix.\n";

constexpr lab::Program kProgram{
    .name = "tavrenix-lab",
    .help = kHelp,
    .hasCheck = true,
    .mostWords = std::numeric_limits<std::size_t>::max(),
};

uid_t effectiveUser() {
  return sharedHost().effectiveUser();
}

int run(const lab::CommandLine& line) {
  const auto warnings = lab::simulatedHost().load(line.words[0]);
  for (const std::string& warning : warnings) lab::complain(kProgram, warning);
  if (line.isCheck) return warnings.empty() ? 0 : lab::kBadUse;
  auto arguments = line.frontEndArguments();
  return tavrenixMain(static_cast<int>(arguments.size() - 1), arguments.data(), effectiveUser);
}

}  // namespace

int main(int argc, char** argv) {
  return lab::runProgram(kProgram, argc, argv, run);
}
