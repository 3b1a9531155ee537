// tavrenix-lab-watch: examples/watch.c on a simulated host, whose whole state is an image file.
#include "lab/follower.hpp"
#include "lab/lab_options.hpp"

extern "C" int tavrenixWatchMain(void);

namespace {

using namespace tavrenix;

constexpr char kHelp[] =
    "usage: tavrenix-lab-watch IMAGE\n"
    "       tavrenix-lab-watch --help | --version\n"
    "\n"
    "Prints a line for each logical unit and path in IMAGE, for each that appears in it later, "
    "and\n"
    "for each that disappears, until Ctrl-C ends it. This is a simulation: it does not look at "
    "any\n"
    "device of this machine. Change IMAGE with `tavrenix-lab IMAGE modify ...` or with an editor.\n"
    "If a change makes IMAGE unusable, that is reported once, and the last good state stays.\n"
    "\n"
    "Exit status: 2 if IMAGE is missing or unusable.\n";

constexpr lab::Program kProgram{.name = "tavrenix-lab-watch", .help = kHelp};

int run(const lab::CommandLine& line) {
  const lab::Follower follower(lab::simulatedHost(), line.words[0],
                               [](std::string_view text) { lab::complain(kProgram, text); });
  return tavrenixWatchMain();
}

}  // namespace

int main(int argc, char** argv) {
  return lab::runProgram(kProgram, argc, argv, run);
}
