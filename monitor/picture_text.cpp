#include "monitor/picture_writers.hpp"
#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

class TextDrawing {
 public:
  TextDrawing(const Picture& picture, const Screen& screen) : picture_(picture), screen_(screen) {}

  std::string text() const {
    std::string text =
        line(picture_.stamp) + ports(picture_.hostPorts) + ports(picture_.targetPorts);
    bool occurs[std::size(kLineStyles)] = {};
    for (const auto& box : picture_.boxes) {
      text += '\n' + boxAsText(box);
      for (const auto& row : box.rows) occurs[static_cast<std::size_t>(row.line)] = true;
    }
    std::string legend;
    for (std::size_t i = 0; i < std::size(kLineStyles); ++i) {
      const LineStyle& style = kLineStyles[i];
      if (!occurs[i]) continue;
      legend += line(std::string("  ") + style.stroke + style.letter + style.stroke + "  " +
                     style.meaning);
    }
    return legend.empty() ? text : text + '\n' + legend;
  }

 private:
  std::string shown(const std::string& visibleText) const {
    if (!screen_.asciiOnly) return visibleText;
    std::string result;
    for (const char c : visibleText) result += static_cast<unsigned char>(c) < 0x80 ? c : '?';
    return result;
  }

  std::string line(const std::string& visibleText) const {
    const std::string text = shown(visibleText);
    if (screen_.width == 0 || columnsOf(text) <= screen_.width) return text + '\n';
    return fitted(text, screen_.width) + '\n';
  }

  std::string ports(const std::vector<Picture::Port>& ports) const {
    if (ports.empty()) return {};
    std::vector<Row> rows = {{"", "", ""}};
    for (const auto& port : ports)
      rows.push_back({port.label, shown(visible(port.name)), loadOf(port)});
    return table(rows, 0, screen_.width);
  }

  // As long a line as the share of traffic is large, with the letter of its state.
  static std::string edge(const Picture::Row& row) {
    const LineStyle& style = styleOf(row.line);
    const auto strokes = 1 + static_cast<std::size_t>(row.share.value_or(0) * 8);
    return std::string(strokes, style.stroke) + style.letter + std::string(strokes, style.stroke);
  }

  std::string boxAsText(const Picture::Box& box) const {
    std::string head = titleOf(box);
    for (const std::string& mark : box.marks) head += "  ! " + mark;
    std::vector<Row> rows = {{"", "", "", "", ""}};
    for (const auto& row : box.rows) {
      rows.push_back({labelOf(picture_.hostPorts, row.hostPort), edge(row),
                      labelOf(picture_.targetPorts, row.targetPort), shareOf(row),
                      shown(titleOf(row))});
    }
    const std::string body = table(rows, 2, screen_.width);
    return line(head) + body.substr(1);  // without the empty heading
  }

  const Picture& picture_;
  const Screen& screen_;
};

}  // namespace

std::string pictureAsText(const Picture& picture, const Screen& screen) {
  return TextDrawing(picture, screen).text();
}

}  // namespace tavrenix::monitor
