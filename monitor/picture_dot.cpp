// DOT, the language of graphviz.
#include <cstdio>

#include "monitor/picture_writers.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

// A label: graphviz acts on backslashes in it and on the entities of HTML.
std::string dotString(const std::string& visibleText) {
  std::string result = "\"";
  for (const char c : visibleText) {
    if (c == '"' || c == '\\') result += '\\';
    result += c == '&' ? "&amp;" : std::string(1, c);
  }
  return result + '"';
}

std::string portNodes(const std::vector<Picture::Port>& ports, const char* rank) {
  std::string text = std::string("  { rank=") + rank + ";\n";
  for (const auto& port : ports) {
    text += "    " + port.label + " [style=filled, fillcolor=\"#f6f8fa\", label=" +
            dotString(port.label + ' ' + visible(port.name) + " (" + loadOf(port) + ')') + "];\n";
  }
  return text + "  }\n";
}

std::string describe(const Picture::Row& row) {
  return std::string(styleOf(row.line).letter) + ' ' + titleOf(row) + ' ' + shareOf(row);
}

std::string edge(const std::string& from, const std::string& to, const Picture::Row& row) {
  const LineStyle& style = styleOf(row.line);
  char width[32];
  std::snprintf(width, sizeof width, "%.1f", 1 + 5 * row.share.value_or(0));
  return "  " + from + " -> " + to + " [color=\"" + style.colour + "\", style=" + style.dotStyle +
         ", penwidth=" + width + ", label=" + dotString(describe(row)) + "];\n";
}

std::string boxWithEdges(const Picture& picture, std::size_t number) {
  const Picture::Box& box = picture.boxes[number];
  const std::string node = 'u' + std::to_string(number);
  std::string label = titleOf(box);
  for (const std::string& mark : box.marks) label += "; ! " + mark;
  for (const auto& row : box.rows) {
    if (!row.hostPort && !row.targetPort) label += "; " + describe(row);
  }
  std::string text = "  " + node + " [label=" + dotString(label) +
                     (box.marks.empty() ? "" : ", color=\"#cf222e\", penwidth=2.5") + "];\n";
  for (const auto& row : box.rows) {
    if (row.hostPort) text += edge(picture.hostPorts[*row.hostPort].label, node, row);
    if (row.targetPort) text += edge(node, picture.targetPorts[*row.targetPort].label, row);
  }
  return text;
}

}  // namespace

std::string pictureAsDot(const Picture& picture) {
  std::string meaning;
  for (const LineStyle& style : kLineStyles) {
    meaning += std::string("; ") + style.letter + ": " + style.meaning;
  }
  std::string text = "digraph storage {\n  rankdir=LR; labelloc=t; ranksep=2;\n  label=" +
                     dotString(picture.stamp + meaning) +
                     ";\n  node [shape=box, fontname=monospace, fontsize=11];\n"
                     "  edge [dir=none, fontname=monospace, fontsize=9];\n";
  text += portNodes(picture.hostPorts, "min") + portNodes(picture.targetPorts, "max");
  for (std::size_t i = 0; i < picture.boxes.size(); ++i) text += boxWithEdges(picture, i);
  return text + "}\n";
}

}  // namespace tavrenix::monitor
