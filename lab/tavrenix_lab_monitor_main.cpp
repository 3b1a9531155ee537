// tavrenix-lab-monitor: the monitor's front end on a simulated host, whose image file it follows.
#include <limits>

#include "lab/follower.hpp"
#include "lab/lab_options.hpp"
#include "monitor/entry_point.hpp"

namespace {

using namespace tavrenix;

constexpr char kHelp[] =
    "usage: tavrenix-lab-monitor IMAGE [VERB] [OPTION]...\n"
    "       tavrenix-lab-monitor --help | --version\n"
    "\n"
    "Runs tavrenix-monitor on a simulated host. This is a simulation: it does not look at any\n"
    "device of this machine. Everything it shows comes from IMAGE, a JSON file, and it follows\n"
    "changes of that file. For the verbs see: tavrenix-lab-monitor IMAGE --help\n";

constexpr lab::Program kProgram{
    .name = "tavrenix-lab-monitor",
    .help = kHelp,
    .mostWords = std::numeric_limits<std::size_t>::max(),
};

int run(const lab::CommandLine& line) {
  const lab::Follower follower(lab::simulatedHost(), line.words[0],
                               [](std::string_view text) { lab::complain(kProgram, text); });
  auto arguments = line.frontEndArguments();
  return monitor::runMonitor(static_cast<int>(arguments.size() - 1), arguments.data(),
                             kProgram.name);
}

}  // namespace

int main(int argc, char** argv) {
  return lab::runProgram(kProgram, argc, argv, run);
}
