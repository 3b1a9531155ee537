// tavrenix-lab-maintain: the front end of maintenance on a simulated host, whose image file it
// follows.
#include <limits>

#include "lab/follower.hpp"
#include "lab/lab_options.hpp"
#include "maintain/maintenance_program.hpp"

namespace {

using namespace tavrenix;

constexpr char kHelp[] =
    "usage: tavrenix-lab-maintain IMAGE VERB [OPTION]...\n"
    "       tavrenix-lab-maintain --help | --version\n"
    "\n"
    "Runs tavrenix-maintain on a simulated host. This is a simulation: it changes no device of "
    "this\n"
    "machine. It changes IMAGE, a JSON file, and keeps its journal beside it, in\n"
    "IMAGE.maintenance.json. For the verbs see: tavrenix-lab-maintain IMAGE --help\n";

constexpr lab::Program kProgram{
    .name = "tavrenix-lab-maintain",
    .help = kHelp,
    .mostWords = std::numeric_limits<std::size_t>::max(),
};

int run(const lab::CommandLine& line) {
  const lab::Follower follower(lab::simulatedHost(), line.words[0],
                               [](std::string_view text) { lab::complain(kProgram, text); });
  auto arguments = line.frontEndArguments();
  return maintain::runMaintain(static_cast<int>(arguments.size() - 1), arguments.data(),
                               kProgram.name, std::string(line.words[0]) + ".maintenance.json");
}

}  // namespace

int main(int argc, char** argv) {
  return lab::runProgram(kProgram, argc, argv, run);
}
