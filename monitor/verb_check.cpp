// check: one line and an exit status, as the Monitoring Plugins Development Guidelines ask.
#include <unistd.h>
#include <csignal>

#include <algorithm>

#include "monitor/failure.hpp"
#include "monitor/health.hpp"
#include "monitor/output.hpp"
#include "monitor/plugin_range.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

enum Status { kOk, kWarning, kCritical, kUnknown };
constexpr const char* kWords[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};

struct Problem {
  Status status;
  std::string text;
};

struct Totals {
  std::size_t units = 0, faulty = 0, paths = 0, usable = 0, least = 0;
};

// A character that ends the text for plugin hosts, or that web pages act on.
std::string harmless(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '|' || c == '<' || c == '>' || c == '&') {
      result += c == '|' ? "\\x7C" : c == '<' ? "\\x3C" : c == '>' ? "\\x3E" : "\\x26";
    } else {
      result += c;
    }
  }
  return result;
}

class Check {
 public:
  explicit Check(const CommandLine& line) : expectation_(line), ignored_(line.values('i')) {
    if (const auto text = line.value('w')) warning_.emplace("--warning", *text);
    if (const auto text = line.value('c')) critical_.emplace("--critical", *text);
  }

  void judge(const Storage& storage) {
    if (storage.host.driverPresent == false) {
      throw Failure("the multipath driver is not present");
    }
    for (const Unit& unit : storage.units) {
      const auto isNamedBy = [&](const std::string& pattern) {
        return isNamed(unit, pattern, true);
      };
      if (std::ranges::none_of(ignored_, isNamedBy)) judge(unit);
    }
    if (expectation_.baseline() != nullptr) judgeMissing(storage);
    if (totals_.units == 0 && problems_.empty()) throw Failure("there is no unit to check");
  }

  Status status() const {
    Status worst = kOk;
    for (const Problem& problem : problems_) worst = std::max(worst, problem.status);
    return worst;
  }

  std::string line() const {
    constexpr std::size_t kMost = 3;  // plugin hosts cut long lines
    std::string text = std::string("TAVRENIX ") + kWords[status()] + " - ";
    auto sorted = problems_;
    std::ranges::stable_sort(sorted, std::greater(), &Problem::status);
    for (std::size_t i = 0; i < std::min(sorted.size(), kMost); ++i) {
      text += (i == 0 ? "" : "; ") + sorted[i].text;
    }
    if (sorted.size() > kMost) text += "; and " + std::to_string(sorted.size() - kMost) + " more";
    if (sorted.empty()) {
      text += std::to_string(totals_.units) + " units, " + std::to_string(totals_.usable) + " of " +
              std::to_string(totals_.paths) + " paths usable";
    }
    return text + " | " + performance() + '\n';
  }

 private:
  void judge(const Unit& unit) {
    const std::size_t usable = usablePaths(unit);
    totals_.least = totals_.units == 0 ? usable : std::min(totals_.least, usable);
    ++totals_.units;
    totals_.paths += unit.paths.size();
    totals_.usable += usable;
    const std::size_t before = problems_.size();
    const std::string name = visible(unit.title()) + ": ";
    for (const Finding& finding : findingsOf(unit, expectation_.pathsOf(unit))) {
      add(finding.isCritical ? kCritical : kWarning, name + finding.text);
    }
    const auto count = static_cast<double>(usable);
    const bool isCritical = critical_ && critical_->alerts(count);
    if (isCritical || (warning_ && warning_->alerts(count))) {
      const PluginRange& range = isCritical ? *critical_ : *warning_;
      add(isCritical ? kCritical : kWarning,
          name + std::to_string(usable) + " usable paths alert by " + range.text());
    }
    if (problems_.size() != before) ++totals_.faulty;
  }

  // A missing path counts in the unit's expectation if it was usable. One that stood by is not
  // found.
  void judgeMissing(const Storage& storage) {
    for (const auto& difference : compare(*expectation_.baseline(), storage)) {
      const auto isNamedBy = [&](const std::string& pattern) {
        Unit unit;
        unit.alias = difference.unit;
        return isNamed(unit, pattern, true);
      };
      if (!difference.isMissing || !difference.isUnit) continue;
      if (std::ranges::none_of(ignored_, isNamedBy)) add(kCritical, describe(difference));
    }
  }

  void add(Status status, const std::string& text) {
    problems_.push_back({status, harmless(text)});
  }

  // Each figure as label=value;warning;critical;least;most.
  std::string performance() const {
    const auto figure = [](const char* label, std::size_t value, const std::string& rest) {
      return label + ('=' + std::to_string(value)) + rest;
    };
    const std::string limits = ';' + (warning_ ? warning_->text() : "") + ';' +
                               (critical_ ? critical_->text() : "") + ";0";
    const std::string most = ";;;0;" + std::to_string(totals_.paths);
    return figure("units", totals_.units, ";;;0") + ' ' +
           figure("units_faulty", totals_.faulty, ";;;0;" + std::to_string(totals_.units)) + ' ' +
           figure("paths", totals_.paths, ";;;0") + ' ' +
           figure("paths_usable", totals_.usable, most) + ' ' +
           figure("unit_paths_usable_min", totals_.least, limits);
  }

  Expectation expectation_;
  std::vector<std::string> ignored_;
  std::optional<PluginRange> warning_, critical_;
  std::vector<Problem> problems_;
  Totals totals_;
};

void giveUp(int) {
  constexpr char kText[] = "TAVRENIX UNKNOWN - no answer within the time-out\n";
  if (::write(STDOUT_FILENO, kText, sizeof kText - 1) < 0) ::_exit(kUnknown);
  ::_exit(kUnknown);
}

int runUnguarded(int argc, char** argv) {
  const CommandLine line(argc, argv,
                         {kBaselineOption,
                          kPathsOption,
                          {"warning", 'w', true},
                          {"critical", 'c', true},
                          {"ignore", 'i', true},
                          {"timeout", 't', true}},
                         0);
  std::signal(SIGALRM, giveUp);
  ::alarm(static_cast<unsigned>(line.number('t', 1, 86'400).value_or(10)));
  Check check(line);
  check.judge(readStorage());
  print(check.line());
  return check.status();
}

}  // namespace

int runCheck(int argc, char** argv) {
  try {
    return runUnguarded(argc, argv);
  } catch (const std::exception& error) {
    print("TAVRENIX UNKNOWN - " + harmless(error.what()) + '\n');
    return kUnknown;
  }
}

}  // namespace tavrenix::monitor
