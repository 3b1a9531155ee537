#include <cstdio>

#include "monitor/picture_writers.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

using Layout = PictureLayout;

std::string decimal(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

std::string attribute(const char* name, double value) {
  return std::string(" ") + name + "=\"" + decimal(value) + '"';
}

std::string textAt(double x, double y, const char* kind, const std::string& visibleText) {
  return std::string("<text class=\"") + kind + '"' + attribute("x", x) + attribute("y", y) + '>' +
         markup(visibleText) + "</text>";
}

std::string rectangle(double x, double y, double width, double height) {
  return "<rect rx=\"4\"" + attribute("x", x) + attribute("y", y) + attribute("width", width) +
         attribute("height", height) + "/>";
}

double widthOf(const Picture::Row& row) {
  return 1.2 + 5 * row.share.value_or(0);
}

class BandDrawing {
 public:
  BandDrawing(const Picture& picture, const Layout& layout, const Band& band)
      : picture_(picture), layout_(layout), band_(band) {}

  std::string svg() const {
    std::string text;
    for (const PlacedBox& placed : band_.boxes) text += edges(placed);
    for (const auto& placed : band_.hostPorts) {
      text += port(picture_.hostPorts[placed.port], layout_.hostX, placed.y, layout_.hostWidth);
    }
    for (const auto& placed : band_.targetPorts) {
      text +=
          port(picture_.targetPorts[placed.port], layout_.targetX, placed.y, layout_.targetWidth);
    }
    for (const PlacedBox& placed : band_.boxes) text += box(placed);
    return text;
  }

 private:
  static double middleOf(const std::vector<PlacedPort>& ports, std::size_t port) {
    for (const PlacedPort& placed : ports) {
      if (placed.port == port) return placed.y + Layout::kPortHeight / 2;
    }
    return 0;
  }

  static std::string edge(const Picture::Row& row, const std::string& port, std::size_t box,
                          const double (&from)[2], const double (&to)[2]) {
    const LineStyle& style = styleOf(row.line);
    const std::string bend = decimal((from[0] + to[0]) / 2);
    return std::string("<path class=\"edge ") + style.letter + "\" data-port=\"" + port +
           "\" data-box=\"" + std::to_string(box) + "\" stroke-width=\"" + decimal(widthOf(row)) +
           "\" d=\"M" + decimal(from[0]) + ' ' + decimal(from[1]) + 'C' + bend + ' ' +
           decimal(from[1]) + ' ' + bend + ' ' + decimal(to[1]) + ' ' + decimal(to[0]) + ' ' +
           decimal(to[1]) + "\"/>\n";
  }

  std::string edges(const PlacedBox& placed) const {
    std::string text;
    const auto& rows = picture_.boxes[placed.box].rows;
    const double right = layout_.boxX + layout_.boxWidth;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const double y = placed.rowY(i);
      if (const auto port = rows[i].hostPort) {
        text += edge(rows[i], picture_.hostPorts[*port].label, placed.box,
                     {layout_.hostX + layout_.hostWidth, middleOf(band_.hostPorts, *port)},
                     {layout_.boxX, y});
      }
      if (const auto port = rows[i].targetPort) {
        text += edge(rows[i], picture_.targetPorts[*port].label, placed.box, {right, y},
                     {layout_.targetX, middleOf(band_.targetPorts, *port)});
      }
    }
    return text;
  }

  static std::string port(const Picture::Port& port, double x, double y, double width) {
    const std::string name = visible(port.name);
    const double inside = x + Layout::kMargin;
    return "<g class=\"port\" data-port=\"" + port.label + "\"><title>" +
           markup(port.label + ": " + name) + "</title>" +
           rectangle(x, y, width, Layout::kPortHeight) +
           textAt(inside, y + 16, "name", port.label) +
           textAt(inside + 4 * Layout::kColumn, y + 16, "plain", fittedName(name)) +
           textAt(inside, y + 31, "note", loadOf(port)) + "</g>\n";
  }

  std::string row(const Picture::Row& row, double y) const {
    const double left = layout_.boxX + Layout::kMargin;
    const double right = layout_.boxX + layout_.boxWidth - Layout::kMargin;
    const LineStyle& style = styleOf(row.line);
    const std::string letter = std::string("letter ") + style.letter;
    const double base = y + 4;
    return "<g class=\"row\"><title>" +
           markup(titleOf(row) + ": " + style.meaning + ", share " + shareOf(row)) + "</title>" +
           textAt(left, base, "note", labelOf(picture_.hostPorts, row.hostPort)) +
           textAt(left + 5 * Layout::kColumn, base, letter.c_str(), style.letter) +
           textAt(left + 7 * Layout::kColumn, base, "plain", fitted(titleOf(row), 14)) +
           textAt(right - 5 * Layout::kColumn, base, "plain end", shareOf(row)) +
           textAt(right, base, "note end", labelOf(picture_.targetPorts, row.targetPort)) +
           "</g>\n";
  }

  std::string box(const PlacedBox& placed) const {
    const Picture::Box& box = picture_.boxes[placed.box];
    const double left = layout_.boxX + Layout::kMargin;
    std::string text = std::string("<g class=\"box") + (box.marks.empty() ? "" : " marked") +
                       "\" data-box=\"" + std::to_string(placed.box) + "\"><title>" +
                       markup(titleOf(box)) + "</title>" +
                       rectangle(layout_.boxX, placed.y, layout_.boxWidth, placed.height);
    text += textAt(left, placed.y + 16, "name", fittedName(titleOf(box))) + '\n';
    double y = placed.y + 16;
    for (const std::string& mark : box.marks) {
      y += Layout::kLine;
      text += textAt(left, y, "mark", "! " + mark);
    }
    for (std::size_t i = 0; i < box.rows.size(); ++i) text += row(box.rows[i], placed.rowY(i));
    return text + "</g>\n";
  }

  const Picture& picture_;
  const Layout& layout_;
  const Band& band_;
};

}  // namespace

std::string markup(const std::string& visibleText) {
  std::string result;
  for (const char c : visibleText) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string styleSheet() {
  std::string text =
      "text{font:12px monospace;fill:#1f2328;white-space:pre}"
      ".name{font-weight:bold}.note{fill:#59636e}.end{text-anchor:end}"
      ".mark{fill:#cf222e;font-weight:bold}.letter{font-weight:bold}"
      "rect{fill:#fff;stroke:#59636e}.port rect{fill:#f6f8fa}"
      ".marked>rect{stroke:#cf222e;stroke-width:2.5}.edge{fill:none}";
  for (const LineStyle& style : kLineStyles) {
    text += std::string(".edge.") + style.letter + "{stroke:" + style.colour +
            (*style.dashes == '\0' ? "" : std::string(";stroke-dasharray:") + style.dashes) +
            "}.letter." + style.letter + "{fill:" + style.colour + '}';
  }
  return text;
}

std::string bandAsSvg(const Picture& picture, const PictureLayout& layout, const Band& band) {
  return BandDrawing(picture, layout, band).svg();
}

std::string legendAsSvg() {
  constexpr double kSample = 40;
  std::string text;
  double x = Layout::kMargin;
  for (const LineStyle& style : kLineStyles) {
    const std::string meaning = std::string(style.letter) + ' ' + style.meaning;
    text += std::string("<path class=\"edge ") + style.letter + "\" stroke-width=\"2.5\" d=\"M" +
            decimal(x) + " 12h" + decimal(kSample) + "\"/>" +
            textAt(x + kSample + 6, 16, "plain", meaning);
    x += kSample + 24 + static_cast<double>(meaning.size()) * Layout::kColumn;
  }
  return text + '\n';
}

std::string pictureAsSvg(const Picture& picture) {
  constexpr double kHead = 60, kLeastWidth = 1100;  // for the legend
  const PictureLayout layout = layoutOf(picture);
  double height = kHead;
  std::string bands;
  for (const Band& band : layout.bands) {
    bands += "<g transform=\"translate(0 " + decimal(height) + ")\">\n" +
             bandAsSvg(picture, layout, band) + "</g>\n";
    height += band.height;
  }
  const std::string width = decimal(std::max(layout.width, kLeastWidth));
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
         "width=\"" +
         width + "\" height=\"" + decimal(height) + "\" viewBox=\"0 0 " + width + ' ' +
         decimal(height) + "\">\n<title>Multipathed storage</title>\n<style>" + styleSheet() +
         "</style>\n<rect width=\"100%\" height=\"100%\" style=\"stroke:none\"/>\n" +
         textAt(Layout::kMargin, 20, "name", picture.stamp) +
         "\n<g transform=\"translate(0 28)\">" + legendAsSvg() + "</g>\n" + bands + "</svg>\n";
}

}  // namespace tavrenix::monitor
