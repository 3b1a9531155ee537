#include "maintain/ticket.hpp"

#include <algorithm>

#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::counted;
using monitor::Row;

std::string cell(const std::optional<std::string>& text, const monitor::Screen& screen) {
  return text ? monitor::visible(*text, screen.asciiOnly) : "";
}

std::string change(std::size_t before, std::size_t after) {
  return std::to_string(before) + " -> " + std::to_string(after);
}

Row unitRow(const UnitRecord& unit, const monitor::Screen& screen) {
  const Usable before = usableBefore(unit), after = usableAfter(unit);
  Row row = {cell(unit.title, screen), change(before.active(), after.active())};
  for (std::size_t i = 0; i < std::size(before.byState); ++i) {
    row.push_back(change(before.byState[i], after.byState[i]));
  }
  row.emplace_back(unit.isAccepted ? "accepted" : "");
  return row;
}

Row pathRow(const UnitRecord& unit, const PathRecord& path, const monitor::Screen& screen) {
  const char* const plan = path.step == Step::planned ? "take out"
                           : path.step == Step::out   ? "out already"
                                                      : nameOf(path.step);
  return {cell(unit.title, screen),
          cell(path.device, screen),
          plan,
          path.wasUsed ? path.state : "out of use",
          cell(path.hostPort, screen),
          cell(path.targetPort, screen),
          cell(path.address, screen),
          cell(path.identifier, screen)};
}

std::string resultOf(const Journal& journal) {
  const auto count = [&](bool (*isCounted)(const PathRecord&)) {
    std::ptrdiff_t paths = 0;
    for (const UnitRecord& unit : journal.units)
      paths += std::ranges::count_if(unit.paths, isCounted);
    return counted(static_cast<std::size_t>(paths), "path");
  };
  const std::string out = count(mayBeOut);
  const std::string back = count([](const PathRecord& path) { return path.step == Step::enabled; });
  std::string text = nameOf(journal.state);
  if (isOpen(journal.state)) text += ", " + out + " out";
  if (journal.state != State::drained && journal.state != State::draining)
    text += ", " + back + " back";
  return text;
}

}  // namespace

std::string planText(const Journal& plan, const monitor::Screen& screen) {
  std::vector<Row> units = {
      {"UNIT", "USABLE", "OPTIMIZED", "NON-OPTIMIZED", "STANDBY", "LOSS OF LAST"}};
  std::vector<Row> paths = {{"UNIT", "DEVICE", plan.state == State::planned ? "PLAN" : "STEP",
                             "STATE BEFORE", "HOST PORT", "TARGET PORT", "ADDRESS", "PATH"}};
  for (const UnitRecord& unit : plan.units) {
    units.push_back(unitRow(unit, screen));
    for (const PathRecord& path : unit.paths) paths.push_back(pathRow(unit, path, screen));
  }
  return monitor::table(units, 0, screen.width) + '\n' + monitor::table(paths, 0, screen.width);
}

std::string ticketText(const Journal& journal, const monitor::Screen& screen) {
  std::vector<Row> facts = {{"", ""}};
  const auto fact = [&](const char* name, const std::string& value) {
    if (!value.empty()) facts.push_back({name, cell(value, screen)});
  };
  fact("result", resultOf(journal));
  fact("host", journal.host);
  fact("by", journal.user);
  fact("begun", journal.begun);
  fact("ended", journal.ended);
  for (const std::string& word : journal.selection) fact("selection", word);
  fact("reason", journal.reason);
  for (const std::string& text : journal.surprises) fact("surprise", text);
  const std::string lines = monitor::table(facts, 0, screen.width);
  return "Maintenance of paths" + lines.substr(std::min(lines.find('\n'), lines.size())) + '\n' +
         planText(journal, screen);
}

}  // namespace tavrenix::maintain
