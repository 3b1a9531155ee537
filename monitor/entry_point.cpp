#include "monitor/entry_point.hpp"

#include <cstdio>
#include <string_view>

#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

constexpr char kHelp[] =
    "usage: tavrenix-monitor [VERB] [OPTION]...\n"
    "       tavrenix-monitor --help | --version\n"
    "\n"
    "Shows and watches multipathed storage. It changes nothing and reads nothing from the storage\n"
    "itself. Verbs:\n"
    "\n"
    "  status    totals and each unit that is not well, and why (the default)\n"
    "              -a, --all            the other units as well\n"
    "              -u, --unit UNIT      one unit in full, by identifier, alias, device or WWID\n"
    "  check     one line and the exit status of a monitoring plugin\n"
    "              -w, --warning RANGE  alert by a unit's number of usable paths: 4: is below 4\n"
    "              -c, --critical RANGE\n"
    "              -i, --ignore PATTERN leave out units with such a name; may be repeated\n"
    "              -t, --timeout SECONDS (10)\n"
    "  json      everything as a JSON document\n"
    "              --units, --paths     only the units, or only the paths\n"
    "              --watch SECONDS      one document a line, again and again\n"
    "  metrics   everything in the Prometheus text format\n"
    "              --textfile FILE      into a file that is replaced whole, for node_exporter\n"
    "              --listen ADDRESS     over HTTP, with pictures, on 127.0.0.1 if ADDRESS\n"
    "                                   is only a port\n"
    "              -m, --metrics SET    all (the default), states: no counters, units: no paths\n"
    "  picture   ports and units, and the paths between them\n"
    "              -f, --format FORMAT  text (the default), svg, dot or html\n"
    "              -o, --output FILE    into a file that is replaced whole; its ending may say\n"
    "                                   the format\n"
    "              --unfold             a box for each unit, also if units look alike\n"
    "  top       units and paths with their traffic, live; ? shows the keys\n"
    "              -b, --batch          prints tables, as many as -n, --count COUNT says (1)\n"
    "              -d, --delay SECONDS  between two looks (2)\n"
    "              -s, --sort ORDER     name, bytes (the default), read, written, commands, skew,\n"
    "                                   changed or health\n"
    "              -f, --filter TEXT    units with that text in a name, a port or a state\n"
    "              --unfold             paths as well\n"
    "  watch     one line for each change, until it is ended with Ctrl-C\n"
    "              -j, --json           as JSON objects\n"
    "              -n, --interval SECONDS look at least so often (2)\n"
    "  baseline record FILE | show FILE | diff FILE\n"
    "            what this machine should have, and what is missing or new since\n"
    "\n"
    "What status, check and metrics expect of each unit:\n"
    "              -p, --paths N        so many usable paths\n"
    "              -b, --baseline FILE  the paths that were recorded\n"
    "\n"
    "Exit status: 0, or 2 if there is no report; diff: 1 if something differs; check: 0 to 3.\n"
    "The manual page tavrenix-monitor(8) has examples.\n";

struct Verb {
  std::string_view name;
  int (*run)(int argc, char** argv);
};
constexpr Verb kVerbs[] = {{"status", runStatus},   {"check", runCheck},      {"json", runJson},
                           {"metrics", runMetrics}, {"picture", runPicture},  {"top", runTop},
                           {"watch", runWatch},     {"baseline", runBaseline}};

int run(int argc, char** argv) {
  const std::string_view first = argc < 2 ? "" : argv[1];
  if (first == "-h" || first == "help" ||
      (argc > 1 && argv[argc - 1] == std::string_view("--help"))) {
    print(kHelp);
    return 0;
  }
  if (first == "--version") {
    print("tavrenix-monitor " TAVRENIX_VERSION "\n");
    return 0;
  }
  if (first.empty() || first.starts_with('-')) return runStatus(argc, argv);
  for (const Verb& verb : kVerbs) {
    if (verb.name == first) return verb.run(argc - 1, argv + 1);
  }
  throw Failure("there is no verb " + visible(first) + "; see --help");
}

}  // namespace

int runMonitor(int argc, char** argv, const char* program) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program, error.what());
    return kFailed;
  }
}

}  // namespace tavrenix::monitor
