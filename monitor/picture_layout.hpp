// Where everything of a picture stands. Boxes stand between host ports and target ports, in bands
// that each repeat the ports of their boxes, so that an edge is never much longer than a screen.
#pragma once

#include "monitor/picture.hpp"

namespace tavrenix::monitor {

// In pixels, from the band's upper left corner.
struct PlacedPort {
  std::size_t port;  // position in the picture
  double y;          // of its upper edge
};
struct PlacedBox {
  std::size_t box;  // position in the picture
  double y, height;
  double rowY(std::size_t row) const;  // middle of the row
  std::size_t marks;                   // lines between title and rows
};
struct Band {
  std::vector<PlacedPort> hostPorts, targetPorts;  // from above to below
  std::vector<PlacedBox> boxes;
  double height = 0;
};

struct PictureLayout {
  static constexpr double kColumn = 7.3;  // pixels of a character of 12 pixels' size
  static constexpr double kMargin = 12;
  static constexpr double kLine = 18;
  static constexpr double kPortHeight = 38;
  static constexpr double kForEdges = 150;  // between ports and boxes

  std::vector<Band> bands;
  double hostX = kMargin, hostWidth = 0;
  double boxX = 0, boxWidth = 0;
  double targetX = 0, targetWidth = 0;
  double width = 0;
};

PictureLayout layoutOf(const Picture& picture);

// Visible text that fits into a port or a box.
std::string fittedName(const std::string& visibleText);

}  // namespace tavrenix::monitor
