#include "monitor/picture_layout.hpp"

#include <algorithm>
#include <map>
#include <set>

#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

using RowPort = std::optional<std::size_t> Picture::Row::*;

constexpr double kBetweenBoxes = 14;
constexpr double kBetweenPorts = 10;
constexpr double kFullBand = 900;  // height from which on the next box begins a new band
constexpr std::size_t kMostColumns = 40;
constexpr std::size_t kColumnsOfARow = 34;  // labels, device, share and letter beside each other

std::set<std::size_t> portsOf(const Picture::Box& box, RowPort port) {
  std::set<std::size_t> ports;
  for (const auto& row : box.rows) {
    if (row.*port) ports.insert(*(row.*port));
  }
  return ports;
}

double heightOf(const Picture::Box& box) {
  const std::size_t lines = 1 + box.marks.size() + box.rows.size();
  return static_cast<double>(lines) * PictureLayout::kLine + PictureLayout::kLine / 2;
}

// A new band begins where a box shares no port with the one before, and where one is full.
std::vector<Band> bandsOf(const Picture& picture) {
  std::vector<Band> bands;
  std::set<std::size_t> before;
  for (std::size_t i = 0; i < picture.boxes.size(); ++i) {
    const auto& box = picture.boxes[i];
    const auto ports = portsOf(box, &Picture::Row::hostPort);
    const bool isRelated =
        std::ranges::any_of(ports, [&](std::size_t port) { return before.contains(port); });
    const bool isAlone = !isRelated && !(ports.empty() && before.empty());
    if (bands.empty() || isAlone || bands.back().height >= kFullBand) bands.emplace_back();
    Band& band = bands.back();
    const double y = band.height + (band.boxes.empty() ? PictureLayout::kMargin : kBetweenBoxes);
    band.boxes.push_back({i, y, heightOf(box), box.marks.size()});
    band.height = y + band.boxes.back().height;
    before = ports;
  }
  return bands;
}

// Each port as near as possible to the middle of its rows, so that few edges cross.
std::vector<PlacedPort> place(const Picture& picture, Band& band, RowPort port) {
  struct Middle {
    double sum = 0;
    double count = 0;
  };
  std::map<std::size_t, Middle> middles;
  for (const PlacedBox& placed : band.boxes) {
    const auto& rows = picture.boxes[placed.box].rows;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (!(rows[row].*port)) continue;
      Middle& middle = middles[*(rows[row].*port)];
      middle.sum += placed.rowY(row);
      ++middle.count;
    }
  }
  std::vector<std::pair<double, std::size_t>> order;
  order.reserve(middles.size());
  for (const auto& [number, middle] : middles)
    order.emplace_back(middle.sum / middle.count, number);
  std::ranges::stable_sort(order, {}, &std::pair<double, std::size_t>::first);
  // From above as far down as wanted, then from below as far up as needed.
  constexpr double kStep = PictureLayout::kPortHeight + kBetweenPorts;
  std::vector<PlacedPort> ports;
  double next = PictureLayout::kMargin;
  for (const auto& [middle, number] : order) {
    const double y = std::max(next, middle - PictureLayout::kPortHeight / 2);
    ports.push_back({number, y});
    next = y + kStep;
  }
  const double needed =
      PictureLayout::kMargin + kStep * static_cast<double>(ports.size()) - kBetweenPorts;
  band.height = std::max(band.height, needed);
  double last = band.height - PictureLayout::kPortHeight;
  for (auto placed = ports.rbegin(); placed != ports.rend(); ++placed) {
    placed->y = std::min(placed->y, last);
    last = placed->y - kStep;
  }
  return ports;
}

double widthOf(std::size_t columns) {
  return static_cast<double>(columns) * PictureLayout::kColumn + 2 * PictureLayout::kMargin;
}

double widthOf(const std::vector<Picture::Port>& ports) {
  std::size_t columns = 0;
  for (const auto& port : ports) {
    columns =
        std::max({columns, 4 + columnsOf(fittedName(visible(port.name))), columnsOf(loadOf(port))});
  }
  return ports.empty() ? 0 : widthOf(columns);
}

double widthOf(const std::vector<Picture::Box>& boxes) {
  std::size_t columns = kColumnsOfARow;
  for (const auto& box : boxes) columns = std::max(columns, columnsOf(fittedName(titleOf(box))));
  return widthOf(columns);
}

}  // namespace

double PlacedBox::rowY(std::size_t row) const {
  return y + PictureLayout::kLine * (static_cast<double>(1 + marks + row) + 0.7);
}

PictureLayout layoutOf(const Picture& picture) {
  PictureLayout layout;
  layout.bands = bandsOf(picture);
  for (Band& band : layout.bands) {
    band.hostPorts = place(picture, band, &Picture::Row::hostPort);
    band.targetPorts = place(picture, band, &Picture::Row::targetPort);
    band.height += PictureLayout::kMargin;
  }
  const auto beside = [](double width) {
    return width == 0 ? 0 : width + PictureLayout::kForEdges;
  };
  layout.hostWidth = widthOf(picture.hostPorts);
  layout.boxX = layout.hostX + beside(layout.hostWidth);
  layout.boxWidth = widthOf(picture.boxes);
  layout.targetWidth = widthOf(picture.targetPorts);
  layout.targetX = layout.boxX + layout.boxWidth + PictureLayout::kForEdges;
  layout.width =
      layout.boxX + layout.boxWidth + beside(layout.targetWidth) + PictureLayout::kMargin;
  return layout;
}

std::string fittedName(const std::string& visibleText) {
  return columnsOf(visibleText) <= kMostColumns ? visibleText : fitted(visibleText, kMostColumns);
}

}  // namespace tavrenix::monitor
