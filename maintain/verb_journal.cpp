// The verb status: the journal, compared with the storage.
#include "maintain/common_options.hpp"
#include "maintain/journal_file.hpp"
#include "maintain/journal_json.hpp"
#include "maintain/live_paths.hpp"
#include "maintain/maintenance_verbs.hpp"
#include "maintain/ticket.hpp"
#include "monitor/output.hpp"

namespace tavrenix::maintain {

namespace {

struct JournalStatus {
  std::optional<Journal> journal;
  std::optional<std::string> holder;  // of the lock
  std::vector<std::string> drift;

  bool hasOpen() const { return journal && isOpen(journal->state); }
};

monitor::Json statusDocument(const JournalStatus& status) {
  monitor::Json document = {{"version", {{"major", 1}, {"minor", 0}}},
                            {"open", status.hasOpen()},
                            {"drift", status.drift}};
  if (status.holder) document["run"] = *status.holder;
  if (status.journal) document["maintenance"] = documentOf(*status.journal);
  return document;
}

std::string statusText(const JournalStatus& status) {
  std::string text = status.hasOpen() ? "A maintenance is open.\n" : "No maintenance is open.\n";
  if (status.holder) text += "A run is at work: " + *status.holder + '\n';
  for (const std::string& line : status.drift) text += "changed: " + line + '\n';
  if (!status.journal) return text;
  return text + (status.hasOpen() ? "\n" : "The last one:\n\n") +
         ticketText(*status.journal, monitor::screen());
}

}  // namespace

int runJournalStatus(int argc, char** argv, const std::string& journal) {
  const monitor::CommandLine line(argc, argv, {kJsonOption, kDryRunOption, kJournalOption}, 0);
  const std::string file = journalOf(line, journal);
  JournalStatus status{readJournal(file), lockHolder(file), {}};
  if (status.hasOpen()) {
    status.drift = driftOf(*status.journal, monitor::readStorage(), bootID());
  }
  monitor::print(line.has(kJsonOption.letter) ? monitor::textOf(statusDocument(status), false)
                                              : statusText(status));
  return 0;
}

}  // namespace tavrenix::maintain
