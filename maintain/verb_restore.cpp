// The verbs undo and restore.
#include "maintain/bring_back.hpp"
#include "maintain/common_options.hpp"
#include "maintain/journal_file.hpp"
#include "maintain/journal_json.hpp"
#include "maintain/live_paths.hpp"
#include "maintain/maintenance_verbs.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::CommandLine;
using monitor::Failure;

Journal openJournal(const std::string& file, Purpose purpose) {
  auto journal = readJournal(file);
  if (!journal || !isOpen(journal->state)) throw Failure("no maintenance is open");
  if (purpose == Purpose::restore && journal->state == State::draining) {
    throw Failure("the drain was not completed: resume or undo it");
  }
  if (purpose == Purpose::restore && journal->state == State::undoing) {
    throw Failure("an undo was begun: go on with undo");
  }
  return std::move(*journal);
}

int showWhatWouldBeDone(const Journal& journal, const CommandLine& line) {
  if (line.has(kJsonOption.letter)) {
    monitor::print(monitor::textOf(documentOf(journal), false));
    return 0;
  }
  const monitor::Storage storage = monitor::readStorage();
  std::string text;
  for (const UnitRecord& unit : journal.units) {
    for (const PathRecord& path : unit.paths) {
      if (!mayBeOut(path)) continue;
      const bool isThere = liveOf(storage, unit, path).path != nullptr;
      text += shown(unit, path) + (isThere ? " would be brought back\n" : " is gone\n");
    }
  }
  monitor::print(text + "Nothing was changed.\n");
  return 0;
}

int runReturn(int argc, char** argv, std::string file, Purpose purpose) {
  const CommandLine line(
      argc, argv, {kJsonOption, kDryRunOption, kJournalOption, kWaitOption, kConfirmOption}, 0);
  file = journalOf(line, file);
  const double wait = waitOf(line);
  if (line.has(kDryRunOption.letter)) return showWhatWouldBeDone(openJournal(file, purpose), line);
  const bool isUndo = purpose == Purpose::undo;
  LibraryWorld world(file, mannersOf(line));
  const JournalLock lock(file, holderLine(isUndo ? "undo" : "restore"));
  Journal journal = openJournal(file, purpose);
  world.read();  // nothing is noted by a caller who may not ask the driver
  journal.state = isUndo ? State::undoing : State::restoring;
  // The first step writes the journal. If its disk is full, the paths are brought back all the
  // same.
  return report(journal, line, bringBack(world, journal, purpose, wait));
}

}  // namespace

int runUndo(int argc, char** argv, const std::string& journal) {
  return runReturn(argc, argv, journal, Purpose::undo);
}

int runRestore(int argc, char** argv, const std::string& journal) {
  return runReturn(argc, argv, journal, Purpose::restore);
}

}  // namespace tavrenix::maintain
