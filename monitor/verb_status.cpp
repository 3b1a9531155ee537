#include "monitor/failure.hpp"
#include "monitor/health.hpp"
#include "monitor/output.hpp"
#include "monitor/text_table.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

class StatusReport {
 public:
  StatusReport(const Screen& screen, const Expectation& expectation)
      : screen_(screen), expectation_(expectation) {}

  std::string overview(const Storage& storage, bool all) const {
    if (storage.host.driverPresent == false) return "The multipath driver is not present.\n";
    std::string lines;
    std::size_t faulty = 0, paths = 0, usable = 0;
    for (const Unit& unit : storage.units) {
      const auto findings = findingsOf(unit, expectation_.pathsOf(unit));
      paths += unit.paths.size();
      usable += usablePaths(unit);
      if (!findings.empty()) ++faulty;
      if (all || !findings.empty()) lines += lineOf(unit, findings);
    }
    if (const Baseline* baseline = expectation_.baseline()) {
      for (const auto& difference : compare(*baseline, storage)) {
        lines += line(difference.isMissing ? "MISSING  " : "NEW      ",
                      difference.isMissing ? kRed : kYellow, describe(difference));
      }
    }
    return totals(storage.units.size(), faulty, paths, usable) + lines;
  }

  std::string inFull(const Unit& unit) const {
    std::vector<Row> facts = {{"", ""}};
    const auto fact = [&](const char* name, const std::optional<std::string>& value) {
      if (value && !value->empty()) facts.push_back({name, shown(*value)});
    };
    const auto yes = [](const std::optional<bool>& value, const char* ifTrue, const char* ifFalse) {
      return value ? std::optional<std::string>(*value ? ifTrue : ifFalse) : std::nullopt;
    };
    fact("identifier", unit.identifier);
    fact("WWID", unit.wwid);
    fact("alias", unit.alias);
    fact("device", unit.device);
    fact("map", unit.mapName);
    fact("vendor", unit.vendor);
    fact("product", unit.product);
    if (unit.size) fact("size", readableSize(*unit.size));
    fact("algorithm", unit.algorithm);
    fact("selector", unit.selector);
    if (unit.batchCount) fact("batch count", std::to_string(*unit.batchCount));
    fact("handler", unit.handler);
    fact("without paths", yes(unit.queueing, "requests wait", "requests fail"));
    fact("suspended", yes(unit.suspended, "yes", "no"));
    if (unit.openCount) fact("open count", std::to_string(*unit.openCount));
    fact("read", readableSize(unit.counters.bytesReceived));
    fact("written", readableSize(unit.counters.bytesSent));
    std::string text = lineOf(unit, findingsOf(unit, expectation_.pathsOf(unit)));
    text += table(facts, 2, screen_.width) + '\n' + table(pathRows(unit), 2, screen_.width);
    if (!unit.volumes.empty()) text += '\n' + table(volumeRows(unit), 2, screen_.width);
    return text;
  }

 private:
  static constexpr const char* kRed = "31";
  static constexpr const char* kYellow = "33";
  static constexpr const char* kGreen = "32";

  std::string shown(const std::string& text) const { return visible(text, screen_.asciiOnly); }

  std::string line(const std::string& mark, const char* colour, const std::string& text) const {
    std::string lines =
        wrapped(mark + visibleAgain(text), screen_.width, std::string_view("CRITICAL ").size());
    if (!screen_.colours) return lines;
    return std::string("\033[") + colour + 'm' + mark + "\033[0m" + lines.substr(mark.size());
  }

  // Visible text for a terminal that may show ASCII only.
  std::string visibleAgain(const std::string& text) const {
    if (!screen_.asciiOnly) return text;
    std::string result;
    for (const char c : text) result += static_cast<unsigned char>(c) < 0x80 ? c : '?';
    return result;
  }

  std::string lineOf(const Unit& unit, const std::vector<Finding>& findings) const {
    std::string text = visible(unit.title());
    if (unit.device) text += " (" + visible(*unit.device) + ')';
    text += ": ";
    if (findings.empty()) {
      return line("OK       ", kGreen, text + counted(unit.paths.size(), "path"));
    }
    bool isCritical = false;
    for (const Finding& finding : findings) {
      isCritical = isCritical || finding.isCritical;
      text += (&finding == &findings.front() ? "" : "; ") + finding.text;
    }
    return isCritical ? line("CRITICAL ", kRed, text) : line("WARNING  ", kYellow, text);
  }

  std::string totals(std::size_t units, std::size_t faulty, std::size_t paths,
                     std::size_t usable) const {
    if (units == 0) return "No multipathed units.\n";
    const std::string health = faulty == 0 ? "all well" : std::to_string(faulty) + " not well";
    return wrapped(counted(units, "unit") + ", " + health + "; " + counted(paths, "path") + ", " +
                       std::to_string(usable) + " usable.",
                   screen_.width, 0);
  }

  std::vector<Row> pathRows(const Unit& unit) const {
    std::vector<Row> rows = {{"PATH", "DEVICE", "STATE", "USABLE", "DRIVER", "DISK", "ARRAY",
                              "GROUP", "FAILURES", "READ", "WRITTEN", "HOST PORT", "TARGET PORT"}};
    const auto number = [](const auto& value) { return value ? std::to_string(*value) : ""; };
    const auto text = [&](const auto& value) { return value ? shown(*value) : ""; };
    for (const Path& path : unit.paths) {
      const auto& counters = path.counters;
      rows.push_back({shown(path.identifier), text(path.device), path.state,
                      isUsable(path) ? "yes" : "no", text(path.driverState), text(path.deviceState),
                      text(path.accessState), number(path.group), number(path.failures),
                      counters ? readableSize(counters->bytesReceived) : "",
                      counters ? readableSize(counters->bytesSent) : "", text(path.hostPort),
                      text(path.targetPort)});
    }
    return rows;
  }

  std::vector<Row> volumeRows(const Unit& unit) const {
    std::vector<Row> rows = {{"VOLUME", "DEVICE", "SIZE"}};
    for (const Volume& volume : unit.volumes) {
      rows.push_back({shown(volume.name.value_or("")), shown(volume.device.value_or("")),
                      volume.size ? readableSize(*volume.size) : ""});
    }
    return rows;
  }

  const Screen& screen_;
  const Expectation& expectation_;
};

}  // namespace

int runStatus(int argc, char** argv) {
  const CommandLine line(argc, argv,
                         {{"all", 'a'}, {"unit", 'u', true}, kBaselineOption, kPathsOption}, 0);
  const Expectation expectation(line);
  const Screen shownOn = screen();
  const StatusReport report(shownOn, expectation);
  const Storage storage = readStorageWithProgress();
  const auto name = line.value('u');
  if (!name) {
    print(report.overview(storage, line.has('a')));
    return 0;
  }
  std::string text;
  for (const Unit& unit : storage.units) {
    if (isNamed(unit, *name, false)) text += (text.empty() ? "" : "\n") + report.inFull(unit);
  }
  if (text.empty()) throw Failure("no unit is called " + visible(*name) + "; see status --all");
  print(text);
  return 0;
}

}  // namespace tavrenix::monitor
