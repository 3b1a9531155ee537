#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

int record(const std::string& file) {
  const Storage storage = readStorageWithProgress();
  if (storage.host.driverPresent == false) {
    throw Failure("the multipath driver is not present: nothing was recorded");
  }
  const Baseline baseline = baselineOf(storage);
  replaceFile(file, textOf(baseline));
  print("recorded " + std::to_string(baseline.units.size()) + " units in " + visible(file) + '\n');
  return 0;
}

int show(const std::string& file) {
  std::string text;
  for (const auto& unit : readBaseline(file).units) {
    text += visible(unit.title) + " (" + visible(unit.identifier) +
            "): " + std::to_string(unit.paths.size()) + " paths\n";
  }
  print(text);
  return 0;
}

// As diff(1): 1 if there are differences.
int diff(const std::string& file) {
  const Baseline baseline = readBaseline(file);
  std::string text;
  for (const auto& difference : compare(baseline, readStorageWithProgress())) {
    text += describe(difference) + '\n';
  }
  print(text);
  return text.empty() ? 0 : 1;
}

}  // namespace

int runBaseline(int argc, char** argv) {
  const CommandLine line(argc, argv, {}, 2);
  const auto& words = line.words();
  if (words.size() == 2 && words[0] == "record") return record(words[1]);
  if (words.size() == 2 && words[0] == "show") return show(words[1]);
  if (words.size() == 2 && words[0] == "diff") return diff(words[1]);
  throw Failure("baseline takes record, show or diff, and a file; see --help");
}

}  // namespace tavrenix::monitor
