#include "monitor/picture.hpp"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>
#include <numeric>
#include <set>
#include <tuple>

#include "monitor/health.hpp"
#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

using Ports = std::map<std::string, std::size_t>;  // positions by name

Line lineOf(const Path& path) {
  if (!path.enabled || path.driverState == "failed") return Line::failed;
  const auto* const state = std::ranges::find(kStates, path.state);
  return state == std::end(kStates) ? Line::unavailable
                                    : static_cast<Line>(state - std::begin(kStates));
}

double bytesOf(const Path& path) {
  return static_cast<double>(path.counters->bytesSent) +
         static_cast<double>(path.counters->bytesReceived);
}

Ports portsOf(const Storage& storage, std::optional<std::string> Path::*port, const char* prefix,
              std::vector<Picture::Port>& list) {
  Ports positions;
  for (const Unit& unit : storage.units) {
    for (const Path& path : unit.paths) {
      if (path.*port) positions[*(path.*port)] = 0;
    }
  }
  for (auto& [name, position] : positions) {
    position = list.size();
    list.push_back({prefix + std::to_string(position + 1), name});
  }
  for (const Unit& unit : storage.units) {
    std::set<std::size_t> used;
    for (const Path& path : unit.paths) {
      if (!(path.*port)) continue;
      const std::size_t position = positions[*(path.*port)];
      ++list[position].paths;
      used.insert(position);
    }
    for (const std::size_t position : used) ++list[position].units;
  }
  return positions;
}

std::optional<std::size_t> positionOf(const Ports& ports, const std::optional<std::string>& name) {
  return name ? std::optional(ports.at(*name)) : std::nullopt;
}

// What makes a unit look as it does.
struct Look {
  std::vector<std::optional<std::size_t>> hostPorts, targetPorts;
  std::vector<Line> lines;
  bool suspended = false;
  std::size_t unit = 0;  // its position if units are not to be folded
  auto all() const { return std::tie(hostPorts, targetPorts, lines, suspended, unit); }
  bool operator<(const Look& other) const { return all() < other.all(); }
};

class Drawing {
 public:
  Drawing(const Storage& storage, bool folds) : folds_(folds) {
    host_ = portsOf(storage, &Path::hostPort, "H", picture_.hostPorts);
    target_ = portsOf(storage, &Path::targetPort, "T", picture_.targetPorts);
    std::vector<const Unit*> units;
    for (const Unit& unit : storage.units) units.push_back(&unit);
    std::ranges::stable_sort(units, {}, [](const Unit* unit) { return unit->title(); });
    for (const Unit* unit : units) add(*unit);
  }

  Picture picture() {
    for (auto& [look, box] : boxes_) {
      weigh(box);
      mark(box);
      picture_.boxes.push_back(std::move(box));
    }
    return std::move(picture_);
  }

 private:
  std::vector<Picture::Row> rowsOf(const Unit& unit) const {
    std::vector<Picture::Row> rows;
    for (const Path& path : unit.paths) {
      rows.push_back({positionOf(host_, path.hostPort),
                      positionOf(target_, path.targetPort),
                      lineOf(path),
                      {},
                      {&path}});
    }
    std::ranges::stable_sort(rows, {}, [](const Picture::Row& row) {
      return std::tuple(row.hostPort, row.targetPort, row.line);
    });
    return rows;
  }

  void add(const Unit& unit) {
    auto rows = rowsOf(unit);
    Look look;
    for (const auto& row : rows) {
      look.hostPorts.push_back(row.hostPort);
      look.targetPorts.push_back(row.targetPort);
      look.lines.push_back(row.line);
    }
    look.suspended = unit.suspended == true;
    if (!folds_) look.unit = ++units_;
    Picture::Box& box = boxes_[look];
    box.units.push_back(&unit);
    if (box.rows.empty()) {
      box.rows = std::move(rows);
      return;
    }
    for (std::size_t i = 0; i < rows.size(); ++i) box.rows[i].paths.push_back(rows[i].paths[0]);
  }

  static void weigh(Picture::Box& box) {
    std::vector<double> bytes;
    for (const auto& row : box.rows) {
      const auto isKnown = [](const Path* path) { return path->counters.has_value(); };
      if (!std::ranges::all_of(row.paths, isKnown)) return;
      bytes.push_back(
          std::accumulate(row.paths.begin(), row.paths.end(), 0.0,
                          [](double sum, const Path* path) { return sum + bytesOf(*path); }));
    }
    const double all = std::accumulate(bytes.begin(), bytes.end(), 0.0);
    if (all <= 0) return;
    for (std::size_t i = 0; i < bytes.size(); ++i) box.rows[i].share = bytes[i] / all;
  }

  // All units of a box are alike, so the first stands for them.
  void mark(Picture::Box& box) const {
    const Unit& unit = *box.units.front();
    if (usablePaths(unit) == 0) box.marks.emplace_back("no usable path");
    if (const auto port = onlyPort(unit, &Path::hostPort)) {
      box.marks.push_back("hangs on host port " + picture_.hostPorts[host_.at(*port)].label);
    }
    if (const auto port = onlyPort(unit, &Path::targetPort)) {
      box.marks.push_back("hangs on target port " + picture_.targetPorts[target_.at(*port)].label);
    }
    if (unit.suspended == true) box.marks.emplace_back("suspended");
  }

  bool folds_;
  std::size_t units_ = 0;
  Picture picture_;
  Ports host_, target_;
  std::map<Look, Picture::Box> boxes_;
};

std::string timeInUTC(std::int64_t unixSeconds) {
  const auto seconds = static_cast<std::time_t>(unixSeconds);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char text[40];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts)};
}

}  // namespace

Picture pictureOf(const Storage& storage, std::int64_t unixSeconds, bool folds) {
  Picture picture = Drawing(storage, folds).picture();
  std::size_t paths = 0;
  for (const Unit& unit : storage.units) paths += unit.paths.size();
  if (storage.host.driverPresent == false) picture.stamp = "The multipath driver is not present. ";
  if (storage.host.generation) {
    picture.stamp += "Generation " + std::to_string(*storage.host.generation) + ", ";
  }
  picture.stamp += timeInUTC(unixSeconds) + ": " + counted(storage.units.size(), "unit") + ", " +
                   counted(paths, "path") + ", " + counted(picture.hostPorts.size(), "host port") +
                   ", " + counted(picture.targetPorts.size(), "target port");
  return picture;
}

std::string titleOf(const Picture::Box& box) {
  const Unit& first = *box.units.front();
  std::string title = first.title().empty() ? "(unnamed)" : visible(first.title());
  if (box.units.size() > 1) return title + " x" + std::to_string(box.units.size());
  return first.device ? title + " (" + visible(*first.device) + ')' : title;
}

std::string titleOf(const Picture::Row& row) {
  if (row.paths.size() > 1) return counted(row.paths.size(), "path");
  return visible(row.paths.front()->title());
}

std::string shareOf(const Picture::Row& row) {
  if (!row.share) return "-";
  char text[16];
  std::snprintf(text, sizeof text, "%.0f%%", *row.share * 100);
  return text;
}

std::string labelOf(const std::vector<Picture::Port>& ports,
                    const std::optional<std::size_t>& port) {
  return port ? ports[*port].label : "-";
}

std::string loadOf(const Picture::Port& port) {
  return counted(port.units, "unit") + ", " + counted(port.paths, "path");
}

}  // namespace tavrenix::monitor
