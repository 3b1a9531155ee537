#include "maintain/maintenance_program.hpp"

#include <cstdio>
#include <string_view>

#include "maintain/maintenance_verbs.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;

constexpr char kHelp[] =
    "usage: tavrenix-maintain VERB [OPTION]...\n"
    "       tavrenix-maintain --help | --version\n"
    "\n"
    "Takes paths of multipathed storage out of use for maintenance, and brings the very same "
    "paths\n"
    "back. Verbs:\n"
    "\n"
    "  plan SELECTION   what drain would take out, unit by unit; changes nothing\n"
    "  drain SELECTION  takes the paths out one by one, each verified before the next; at a\n"
    "                   surprise brings back what it took out\n"
    "  drain --resume   goes on with a drain that was killed\n"
    "  status           the maintenance that is open, and what has changed behind it\n"
    "  undo             gives the maintenance up: brings back what it took out\n"
    "  restore          ends the maintenance: brings back what it took out, and checks that it\n"
    "                   carries I/O again\n"
    "\n"
    "SELECTION is one or more of these; each may be repeated:\n"
    "      --host-port PORT    the paths from this port of the host\n"
    "      --target-port PORT  the paths to this port of the array\n"
    "      --host N            the paths of the SCSI host with this number\n"
    "      --path PATH         one path, by device, address or identifier\n"
    "  -u, --unit UNIT         all paths of the unit; beside other options, only paths of this "
    "unit\n"
    "\n"
    "Options:\n"
    "      --accept UNIT       plan, drain: this unit may lose its last usable or optimized path\n"
    "      --reason TEXT       drain: for the journal and the change ticket\n"
    "  -n, --dry-run           say what would be done, and change nothing\n"
    "      --confirm           wait for Enter before each step; anything else stops\n"
    "      --wait SECONDS      for requests under way, and for I/O after restore (30)\n"
    "      --journal FILE      (/var/lib/tavrenix/maintenance.json)\n"
    "  -j, --json              the result as a JSON document\n"
    "\n"
    "Exit status: 0 done; 1 there was a surprise, and drain has brought back what it could;\n"
    "2 refused, and nothing was changed. The manual page tavrenix-maintain(8) has examples.\n";

struct MaintenanceVerb {
  std::string_view name;
  int (*run)(int argc, char** argv, const std::string& journal);
};
constexpr MaintenanceVerb kMaintenanceVerbs[] = {{"plan", runPlan},
                                                 {"drain", runDrain},
                                                 {"status", runJournalStatus},
                                                 {"undo", runUndo},
                                                 {"restore", runRestore}};

int run(int argc, char** argv, const std::string& journal) {
  const std::string_view first = argc < 2 ? "" : argv[1];
  if (first == "-h" || first == "help" ||
      (argc > 1 && argv[argc - 1] == std::string_view("--help"))) {
    monitor::print(kHelp);
    return 0;
  }
  if (first == "--version") {
    monitor::print("tavrenix-maintain " TAVRENIX_VERSION "\n");
    return 0;
  }
  for (const MaintenanceVerb& verb : kMaintenanceVerbs) {
    if (verb.name == first) return verb.run(argc - 1, argv + 1, journal);
  }
  throw Failure(
      (first.empty() ? "a verb is needed" : "there is no verb " + monitor::visible(first)) +
      "; see --help");
}

}  // namespace

int runMaintain(int argc, char** argv, const char* program, const std::string& journal) {
  try {
    return run(argc, argv, journal);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program, error.what());
    return monitor::kFailed;
  }
}

}  // namespace tavrenix::maintain
