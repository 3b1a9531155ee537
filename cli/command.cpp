#include "cli/command.hpp"

#include <libgen.h>
#include <strings.h>
#include <tavrenix/mpio.h>

#include <csignal>
#include <cstdio>
#include <span>
#include <string>

#include "cli/arguments.hpp"
#include "cli/modify.hpp"
#include "cli/objects.hpp"
#include "cli/reports.hpp"

namespace tavrenix::cli {

namespace {

struct Command {
  const char* word;
  void (*run)(const Arguments&);
};

// Runs the command that the word at `index` names. Upper and lower case are the same. Prints the
// usage if there is no such word or command.
void runCommand(std::span<const Command> commands, std::size_t index, const Arguments& arguments) {
  const auto words = wordsOf(arguments);
  if (words.size() > index) {
    for (const Command& command : commands) {
      if (strcasecmp(words[index], command.word) == 0) return command.run(arguments);
    }
  }
  printUsage();
}

void list(const Arguments& /*arguments*/) {
  ObArrayApplyFunction(gLogicalUnits, printLogicalUnitRow, nullptr);
}

void info(const Arguments& arguments) {
  bool identified = false;
  OptionReader options(arguments, kInfoOptions);
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

const Command kVerbs[] = {{"list", list}, {"info", info}, {"modify", modify}};

std::string baseName(std::string path) {
  return basename(path.data());
}

}  // namespace

}  // namespace tavrenix::cli

int tavrenixMain(int argc, char** argv, std::uint32_t (*effectiveUser)()) {
  using namespace tavrenix::cli;

  // If the reader of the output closes it early, as head does, the exit status must stay the same.
  std::signal(SIGPIPE, SIG_IGN);

  if (argc == 1) {
    printUsage();
    return 1;
  }
  if (effectiveUser() != 0) {
    const std::string toolName = baseName(argc > 0 ? argv[0] : "");
    std::fprintf(stderr, "'%s' must be run as root...\n", toolName.c_str());
    return 1;
  }
  if (argc < 2) return 0;

  const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
  if (!units) return 0;
  gLogicalUnits = units.get();
  runCommand(kVerbs, 0, {argc, argv});
  gLogicalUnits = nullptr;
  return 0;
}
