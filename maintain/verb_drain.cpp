// The verbs plan and drain.
#include "maintain/common_options.hpp"
#include "maintain/drain.hpp"
#include "maintain/journal_file.hpp"
#include "maintain/journal_json.hpp"
#include "maintain/maintenance_verbs.hpp"
#include "maintain/plan.hpp"
#include "maintain/ticket.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::CommandLine;
using monitor::Failure;

constexpr monitor::KnownOption kResumeOption = {"resume", 'E'};
constexpr monitor::KnownOption kReasonOption = {"reason", 'R', true};

std::vector<monitor::KnownOption> withSelection(std::vector<monitor::KnownOption> options) {
  options.insert(options.end(), Selection::kOptions.begin(), Selection::kOptions.end());
  return options;
}

Journal planOf(const CommandLine& line) {
  const Selection selection(line);
  Journal plan = planFor(monitor::readStorage(), selection, line.values(kAcceptOption.letter));
  plan.reason = line.value(kReasonOption.letter).value_or("");
  plan.host = hostName();
  plan.user = currentUser();
  plan.bootID = bootID();
  plan.begun = utcNow();
  return plan;
}

// Prints the plan and returns the exit status of a run that changes nothing.
int showPlan(const Journal& plan, const std::vector<std::string>& refusals,
             const CommandLine& line) {
  if (line.has(kJsonOption.letter)) {
    monitor::Json document = documentOf(plan);
    document["refusals"] = refusals;
    monitor::print(monitor::textOf(document, false));
  } else {
    std::string text = planText(plan, monitor::screen()) + '\n';
    for (const std::string& refusal : refusals) text += "refused: " + refusal + '\n';
    monitor::print(text + "Nothing was changed.\n");
  }
  return refusals.empty() ? 0 : monitor::kFailed;
}

void refuseIfOpen(const std::optional<Journal>& journal) {
  if (!journal || !isOpen(journal->state)) return;
  throw Failure("a maintenance is open since " + monitor::visible(journal->begun) + " by " +
                monitor::visible(journal->user) + ": restore, resume or undo it first");
}

// The journal of the drain that was killed.
Journal unfinished(std::optional<Journal> journal) {
  if (!journal || !isOpen(journal->state)) throw Failure("there is no drain to resume");
  if (journal->state == State::drained) throw Failure("the drain is complete: restore or undo it");
  if (journal->state == State::draining) return std::move(*journal);
  throw Failure("the paths are being brought back: go on with " +
                std::string(journal->state == State::undoing ? "undo" : "restore"));
}

int work(LibraryWorld& world, Journal journal, const CommandLine& line) {
  const bool isDrained = drain(world, journal, waitOf(line));
  return report(journal, line, isDrained);
}

int resume(const CommandLine& line, const std::string& file) {
  if (!Selection(line).isEmpty() || line.has(kAcceptOption.letter) ||
      line.has(kReasonOption.letter)) {
    throw Failure("--resume takes selection, units and reason from the journal, so name none");
  }
  if (line.has(kDryRunOption.letter)) return showPlan(unfinished(readJournal(file)), {}, line);
  LibraryWorld world(file, mannersOf(line));
  const JournalLock lock(file, holderLine("drain"));
  return work(world, unfinished(readJournal(file)), line);
}

}  // namespace

int runPlan(int argc, char** argv, const std::string&) {
  const CommandLine line(
      argc, argv, withSelection({kAcceptOption, kJsonOption, kDryRunOption, kReasonOption}), 0);
  const Journal plan = planOf(line);
  return showPlan(plan, refusalsOf(plan), line);
}

int runDrain(int argc, char** argv, const std::string& journal) {
  const CommandLine line(
      argc, argv,
      withSelection({kAcceptOption, kJsonOption, kDryRunOption, kReasonOption, kResumeOption,
                     kJournalOption, kWaitOption, kConfirmOption}),
      0);
  const std::string file = journalOf(line, journal);
  waitOf(line);
  if (line.has(kResumeOption.letter)) return resume(line, file);
  if (line.has(kDryRunOption.letter)) {
    refuseIfOpen(readJournal(file));
    const Journal plan = planOf(line);
    return showPlan(plan, refusalsOf(plan), line);
  }
  LibraryWorld world(file, mannersOf(line));
  const JournalLock lock(file, holderLine("drain"));
  const auto previous = readJournal(file);
  refuseIfOpen(previous);
  Journal plan = planOf(line);
  const auto refusals = refusalsOf(plan);
  if (!refusals.empty()) return showPlan(plan, refusals, line);
  if (previous) setJournalAside(file);
  plan.state = State::draining;
  world.keep(plan);
  return work(world, std::move(plan), line);
}

}  // namespace tavrenix::maintain
