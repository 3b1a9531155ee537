#include "monitor/change_list.hpp"

#include <map>

#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

using Text = std::optional<std::string>;

template <class Of>
struct Fact {
  const char* name;
  Text (*value)(const Of& of);
};

template <class T>
Text asText(const std::optional<T>& value) {
  return value ? Text(std::to_string(*value)) : std::nullopt;
}

Text asText(const std::optional<bool>& value) {
  return value ? Text(*value ? "true" : "false") : std::nullopt;
}

const Fact<Unit> kUnitFacts[] = {
    {"alias", [](const Unit& unit) { return unit.alias; }},
    {"algorithm", [](const Unit& unit) { return unit.algorithm; }},
    {"selector", [](const Unit& unit) { return unit.selector; }},
    {"size_bytes", [](const Unit& unit) { return asText(unit.size); }},
    {"queueing", [](const Unit& unit) { return asText(unit.queueing); }},
    {"suspended", [](const Unit& unit) { return asText(unit.suspended); }},
};

const Fact<Path> kPathFacts[] = {
    {"state", [](const Path& path) { return Text(path.state); }},
    {"enabled", [](const Path& path) { return asText(std::optional(path.enabled)); }},
    {"driver_state", [](const Path& path) { return path.driverState; }},
    {"device_state", [](const Path& path) { return path.deviceState; }},
    {"access_state", [](const Path& path) { return path.accessState; }},
    // Tells of a path that failed and came back between two looks.
    {"failures", [](const Path& path) { return asText(path.failures); }},
};

template <class Of>
using Index = std::map<std::pair<std::string, std::size_t>, const Of*>;

template <class Of>
Index<Of> indexOf(const std::vector<Of>& all) {
  std::map<std::string, std::size_t> seen;
  Index<Of> index;
  for (const Of& one : all) index[{one.identifier, seen[one.identifier]++}] = &one;
  return index;
}

class Comparison {
 public:
  Comparison(const Storage& before, const Storage& after)
      : before_(indexOf(before.units)), after_(indexOf(after.units)) {}

  std::vector<Change> changes() {
    for (const auto& [key, unit] : before_) {
      if (!after_.contains(key)) addWhole("unit_disappeared", "path_disappeared", *unit, false);
    }
    for (const auto& [key, unit] : before_) {
      const auto now = after_.find(key);
      if (now != after_.end()) addMissing("path_disappeared", *unit, *now->second);
    }
    for (const auto& [key, unit] : after_) {
      const auto was = before_.find(key);
      if (was == before_.end()) {
        addWhole("unit_appeared", "path_appeared", *unit, true);
      } else {
        addMissing("path_appeared", *unit, *was->second);
      }
    }
    for (const auto& [key, unit] : after_) {
      const auto was = before_.find(key);
      if (was != before_.end()) addFacts(*was->second, *unit);
    }
    return std::move(changes_);
  }

 private:
  static Change of(const char* event, const Unit& unit, const Path* path) {
    return {event, unit.identifier, unit.title(), path == nullptr ? "" : path->identifier,
            path == nullptr ? "" : path->title()};
  }

  // A unit with all of its paths; a unit comes before its paths and goes after them.
  void addWhole(const char* unitEvent, const char* pathEvent, const Unit& unit, bool unitFirst) {
    if (unitFirst) changes_.push_back(of(unitEvent, unit, nullptr));
    for (const Path& path : unit.paths) changes_.push_back(of(pathEvent, unit, &path));
    if (!unitFirst) changes_.push_back(of(unitEvent, unit, nullptr));
  }

  // The paths of unit that other, the same unit at another time, does not have.
  void addMissing(const char* event, const Unit& unit, const Unit& other) {
    const auto others = indexOf(other.paths);
    for (const auto& [key, path] : indexOf(unit.paths)) {
      if (!others.contains(key)) changes_.push_back(of(event, unit, path));
    }
  }

  template <class Of, std::size_t N>
  void addFacts(const Fact<Of> (&facts)[N], const Change& change, const Of& was, const Of& now) {
    for (const auto& fact : facts) {
      Change one = change;
      one.what = fact.name;
      one.before = fact.value(was);
      one.after = fact.value(now);
      if (one.before != one.after) changes_.push_back(std::move(one));
    }
  }

  void addFacts(const Unit& was, const Unit& now) {
    addFacts(kUnitFacts, of("unit_changed", now, nullptr), was, now);
    const auto before = indexOf(was.paths);
    for (const auto& [key, path] : indexOf(now.paths)) {
      const auto found = before.find(key);
      if (found == before.end()) continue;
      addFacts(kPathFacts, of("path_changed", now, path), *found->second, *path);
    }
  }

  Index<Unit> before_, after_;
  std::vector<Change> changes_;
};

}  // namespace

std::vector<Change> changesBetween(const Storage& before, const Storage& after) {
  return Comparison(before, after).changes();
}

std::string describe(const Change& change) {
  std::string text = visible(change.unitTitle);
  if (!change.pathTitle.empty()) text += ": path " + visible(change.pathTitle);
  if (*change.what == '\0') {
    return text +
           (std::string_view(change.event).ends_with("_appeared") ? " appeared" : " disappeared");
  }
  return text + ": " + change.what + ' ' + visible(change.before.value_or("unknown")) + " -> " +
         visible(change.after.value_or("unknown"));
}

Json asJson(const Change& change) {
  Json object = {{"event", change.event}, {"unit", change.unit}, {"unit_title", change.unitTitle}};
  if (!change.path.empty()) {
    object["path"] = change.path;
    object["path_title"] = change.pathTitle;
  }
  if (*change.what != '\0') object["fact"] = change.what;
  if (change.before) object["before"] = *change.before;
  if (change.after) object["after"] = *change.after;
  return object;
}

}  // namespace tavrenix::monitor
