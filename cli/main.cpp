#include "cli/main.hpp"

#include <libgen.h>
#include <strings.h>
#include <tavrenix/mpio.h>

#include <csignal>
#include <cstdio>
#include <span>

#include "cli/lookup.hpp"
#include "cli/modify.hpp"
#include "cli/options.hpp"
#include "cli/reports.hpp"
#include "cli/state.hpp"
#include "cli/usage.hpp"

namespace tavrenix::cli {

namespace {

struct Command {
  const char* word;
  void (*run)(const Arguments&);
};

// Runs the command whose word stands at this place among the words, in any letter case.
void runCommand(std::span<const Command> commands, std::size_t place, const Arguments& arguments) {
  const auto words = wordsOf(arguments);
  if (words.size() > place) {
    for (const Command& command : commands) {
      if (strcasecmp(words[place], command.word) == 0) return command.run(arguments);
    }
  }
  printUsage();
}

void list(const Arguments& /*arguments*/) {
  ObArrayApplyFunction(gLogicalUnits, printLogicalUnitRow, nullptr);
}

void info(const Arguments& arguments) {
  bool identified = false;
  OptionReader options(arguments, infoOptions);
  for (int letter = options.next(); letter != -1; letter = options.next()) {
    if (letter != 'i') continue;
    identified = true;
    if (const MPIOLogicalUnitRef unit = findLogicalUnitByIdentifier(optarg)) {
      printLogicalUnitRow(unit, optarg);
    } else {
      std::printf("Cannot locate lun with id %s\n", optarg);
    }
  }
  if (!identified) printUsage();
}

void modify(const Arguments& arguments) {
  static const Command objects[] = {{"lun", modifyLun}, {"path", modifyPath}};
  runCommand(objects, 1, arguments);
}

const Command verbs[] = {{"list", list}, {"info", info}, {"modify", modify}};

std::string baseName(std::string path) {
  return basename(path.data());
}

}  // namespace

}  // namespace tavrenix::cli

int tavrenixMain(int argc, char** argv, std::uint32_t (*effectiveUser)()) {
  using namespace tavrenix::cli;

  // A reader that leaves early, as head does, must not change the exit status.
  std::signal(SIGPIPE, SIG_IGN);

  gToolName = baseName(argc > 0 ? argv[0] : "");
  if (argc == 1) {
    printUsage();
    return 1;
  }
  if (effectiveUser() != 0) {
    std::fprintf(stderr, "'%s' must be run as root...\n", gToolName.c_str());
    return 1;
  }
  if (argc < 2) return 0;

  gLogicalUnits = MPIOCopyLogicalUnits();
  if (gLogicalUnits == nullptr) return 0;
  runCommand(verbs, 0, {argc, argv});
  ObRelease(gLogicalUnits);
  gLogicalUnits = nullptr;
  return 0;
}
