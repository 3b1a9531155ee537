#include "maintain/selection.hpp"

#include <algorithm>
#include <cctype>
#include <set>

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Path;
using monitor::Storage;
using monitor::Unit;

constexpr char kHostPort = 'P', kTargetPort = 'T', kHost = 'H', kPath = 'D', kUnit = 'u';

bool isSame(const std::optional<std::string>& name, const std::string& text) {
  return name && std::ranges::equal(*name, text, [](unsigned char a, unsigned char b) {
           return std::tolower(a) == std::tolower(b);
         });
}

// The host is the first number of an address such as "3:0:1:5".
std::optional<std::string> hostOf(const Path& path) {
  if (!path.address || path.address->find(':') == std::string::npos) return std::nullopt;
  return path.address->substr(0, path.address->find(':'));
}

std::optional<std::string> portOf(const Path& path, char option) {
  if (option == kHostPort) return path.hostPort;
  return option == kTargetPort ? path.targetPort : hostOf(path);
}

const char* nameOfOption(char letter) {
  const auto& options = Selection::kOptions;
  return std::ranges::find(options, letter, &monitor::KnownOption::letter)->name;
}

// What could have been named instead of a port or host that no path has.
std::string alternatives(const Storage& storage, char option) {
  std::set<std::string> known;
  for (const Unit& unit : storage.units) {
    for (const Path& path : unit.paths) {
      if (const auto port = portOf(path, option)) known.insert(monitor::visible(*port));
    }
  }
  std::string text;
  for (const std::string& one : known) text += (text.empty() ? "; there are " : ", ") + one;
  return text.empty() ? "; none is known on this host" : text;
}

}  // namespace

const std::vector<monitor::KnownOption> Selection::kOptions = {{"host-port", kHostPort, true},
                                                               {"target-port", kTargetPort, true},
                                                               {"host", kHost, true},
                                                               {"path", kPath, true},
                                                               {"unit", kUnit, true}};

Selection::Selection(const monitor::CommandLine& line) {
  for (const auto& option : kOptions) {
    for (std::string& value : line.values(option.letter)) {
      if (option.letter == kPath && value.starts_with("/dev/")) value.erase(0, 5);
      parts_.push_back({option.letter, std::move(value)});
    }
  }
  constexpr std::uint64_t kMostHosts = UINT32_MAX;
  line.number(kHost, 0, kMostHosts);
}

bool Selection::isEmpty() const {
  return parts_.empty();
}

std::vector<std::string> Selection::words() const {
  std::vector<std::string> words;
  for (const Part& part : parts_) {
    words.push_back(std::string("--") + nameOfOption(part.option) + ' ' + part.value);
  }
  return words;
}

bool Selection::isNamedBy(const Part& part, const Unit& unit, const Path& path) const {
  if (part.option == kUnit) return isNamed(unit, part.value, false);
  if (part.option != kPath) return isSame(portOf(path, part.option), part.value);
  return isSame(path.device, part.value) || isSame(path.address, part.value) ||
         isSame(path.identifier, part.value);
}

bool Selection::names(const Unit& unit, const Path& path) const {
  bool hasUnits = false, hasOthers = false, isUnitNamed = false, isPathNamed = false;
  for (const Part& part : parts_) {
    const bool isNamed = isNamedBy(part, unit, path);
    const bool isUnit = part.option == kUnit;
    (isUnit ? hasUnits : hasOthers) = true;
    if (isNamed) (isUnit ? isUnitNamed : isPathNamed) = true;
  }
  return (isUnitNamed || !hasUnits) && (isPathNamed || !hasOthers) && (hasUnits || hasOthers);
}

void Selection::check(const Storage& storage) const {
  if (isEmpty()) {
    throw Failure("say what: --host-port, --target-port, --host, --path or --unit; see --help");
  }
  const auto any = [&](const auto& isWanted) {
    return std::ranges::any_of(storage.units, [&](const Unit& unit) {
      return std::ranges::any_of(unit.paths,
                                 [&](const Path& path) { return isWanted(unit, path); });
    });
  };
  for (const Part& part : parts_) {
    if (any([&](const auto& unit, const auto& path) { return isNamedBy(part, unit, path); })) {
      continue;
    }
    const bool isPort = part.option != kPath && part.option != kUnit;
    throw Failure(std::string("no path matches --") + nameOfOption(part.option) + ' ' +
                  monitor::visible(part.value) +
                  (isPort ? alternatives(storage, part.option) : ""));
  }
  if (!any([&](const auto& unit, const auto& path) { return names(unit, path); })) {
    throw Failure("no path of these units matches the other options");
  }
}

}  // namespace tavrenix::maintain
