// Ports and units as a picture shows them: units that look alike share a box.
#pragma once

#include "monitor/storage_facts.hpp"

namespace tavrenix::monitor {

// What an edge says of its path. Told apart by colour, by dashes and by a letter.
enum class Line { optimized, nonOptimized, standby, unavailable, failed };

struct LineStyle {
  const char* letter;
  const char* meaning;
  const char* colour;
  const char* dashes;    // as SVG has them; empty for a whole line
  const char* dotStyle;  // as DOT has it
  char stroke;           // in plain text
};
inline constexpr LineStyle kLineStyles[] = {
    {"A", "active, optimized", "#1a7f37", "", "solid", '='},
    {"N", "active, not optimized", "#0969da", "9 4", "dashed", '-'},
    {"S", "standby", "#6e7781", "2 4", "dotted", '.'},
    {"U", "unavailable at the array", "#bc4c00", "12 4 2 4", "dashed", '~'},
    {"F", "failed or disabled", "#cf222e", "4 4", "dotted", 'x'},
};
inline const LineStyle& styleOf(Line line) {
  return kLineStyles[static_cast<std::size_t>(line)];
}

struct Picture {
  struct Port {
    std::string label;  // "H1" of the host, "T1" of a target
    std::string name;   // not visible text yet
    std::size_t units = 0;
    std::size_t paths = 0;
  };
  // One path of each unit of the box.
  struct Row {
    std::optional<std::size_t> hostPort, targetPort;  // positions; nothing if not known
    Line line = Line::optimized;
    std::optional<double> share;     // of the bytes of the box, 0 to 1; nothing if none are known
    std::vector<const Path*> paths;  // borrowed, in the order of the units
  };
  struct Box {
    std::vector<const Unit*> units;  // borrowed, by title
    std::vector<Row> rows;           // by ports
    std::vector<std::string> marks;  // what a person should notice, in visible text
  };
  std::vector<Port> hostPorts, targetPorts;  // by name
  std::vector<Box> boxes;                    // those of equal ports side by side
  std::string stamp;                         // generation, time, totals; visible text
};

// folds: units whose paths have the same ports and lines share a box. storage: borrowed for as long
// as the picture lives.
Picture pictureOf(const Storage& storage, std::int64_t unixSeconds, bool folds);

// "finance (dm-3)", "finance x48": visible text.
std::string titleOf(const Picture::Box& box);
// "sdb", "48 paths": visible text.
std::string titleOf(const Picture::Row& row);
// "37%", or a dash if the share is not known.
std::string shareOf(const Picture::Row& row);
// The port's label, or a dash if it is not known.
std::string labelOf(const std::vector<Picture::Port>& ports,
                    const std::optional<std::size_t>& port);
// "2 units, 3 paths"
std::string loadOf(const Picture::Port& port);

}  // namespace tavrenix::monitor
