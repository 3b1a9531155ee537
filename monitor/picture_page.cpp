// The picture as a page for browsers. Its policy lets it fetch nothing and run only its own script,
// which is known by its hash.
#include <set>

#include "monitor/picture_writers.hpp"
#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

constexpr char kStyle[] = R"css(
body{font:14px sans-serif;margin:0;color:#1f2328;background:#fff}
header{position:sticky;top:0;background:#fff;border-bottom:1px solid #d1d9e0;padding:8px 12px;z-index:1}
h1{font-size:16px;margin:0 0 4px}header p{margin:0 0 6px}
input{font:inherit;width:22em;padding:2px 6px}button{font:inherit;margin-left:4px}
section,.none{padding:0 12px}section>details{border-bottom:1px solid #d1d9e0;padding:8px 0}
summary{cursor:pointer;font-weight:bold}svg{display:block;max-width:none}
.scroll{overflow-x:auto}.members{margin:4px 0 4px 12px}.members[open]{max-height:45vh;overflow:auto}.members summary{font-weight:normal}
table{border-collapse:collapse;font:12px monospace;margin:4px 0 8px 16px}
td,th{text-align:left;padding:1px 14px 1px 0;vertical-align:top}
.port,.box{cursor:pointer}.off{display:none!important}.dim{opacity:.15}
.lit{opacity:1}.lit.edge{filter:drop-shadow(0 0 2px #000)}.lit>rect{fill:#fff8c5!important}
)css";

// The test of pages compares it with the script.
constexpr char kScriptHash[] = "sha256-LGMdzn4xzq+VupUhMvDnoFGVj0S/tADnI11LepLw/Us=";
constexpr char kScript[] = R"js(
"use strict";
const all = (selector, root) => Array.from((root || document).querySelectorAll(selector));
const field = document.getElementById("filter");
const count = document.getElementById("count");
const rows = all("tr[data-box]").map(row => ({row, text: row.textContent.toLowerCase(),
  labels: new Set(row.lastElementChild.textContent.toLowerCase().split(/[ ,]+/))}));
const boxes = new Map(all("g.box").map(box => [box.dataset.box, box]));
const edges = new Map([...boxes.keys()].map(box => [box, []]));
for (const edge of all("path[data-box]")) edges.get(edge.dataset.box).push(edge);

// A port's or a line's label stands for itself alone: H1 is not in H12.
const isLabel = word => /^([ht]\d+|[ansuf])$/.test(word);

function filter() {
  const words = field.value.toLowerCase().split(/\s+/).filter(word => word);
  const found = new Set();
  let units = 0;
  for (const {row, text, labels} of rows) {
    const matches = words.every(word => isLabel(word) ? labels.has(word) : text.includes(word));
    row.classList.toggle("off", !matches);
    if (matches) { found.add(row.dataset.box); ++units; }
  }
  for (const [box, element] of boxes) {
    for (const one of [element, ...edges.get(box)]) one.classList.toggle("dim", !found.has(box));
  }
  for (const list of all(".members")) list.classList.toggle("off", !found.has(list.dataset.box));
  for (const band of all("section")) {
    band.classList.toggle("off", !all("g.box", band).some(box => found.has(box.dataset.box)));
  }
  count.textContent = words.length ? units + " of " + rows.length + " units" : "";
}

function light(event) {
  for (const one of all(".lit")) one.classList.remove("lit");
  const over = event.target.closest("g.port,g.box,path.edge,.members");
  if (!over) return;
  const port = over.matches("g.port") ? over.dataset.port : "";
  const box = over.dataset.box;
  for (const [number, list] of edges) {
    if (!port && number !== box) continue;
    const lit = list.filter(edge => port ? edge.dataset.port === port : true);
    for (const edge of lit) edge.classList.add("lit");
    if (lit.length || !port) boxes.get(number).classList.add("lit");
    const section = boxes.get(number).closest("section");
    for (const edge of lit) {
      section.querySelector('g.port[data-port="' + edge.dataset.port + '"]').classList.add("lit");
    }
  }
}

function choose(event) {
  const port = event.target.closest("g.port");
  const box = event.target.closest("g.box");
  if (port) { field.value = field.value === port.dataset.port ? "" : port.dataset.port; filter(); }
  if (box) {
    const list = document.querySelector('.members[data-box="' + box.dataset.box + '"]');
    list.open = !list.open;
    if (list.open) list.firstElementChild.scrollIntoView({block: "nearest"});
  }
}

field.addEventListener("input", filter);
document.addEventListener("mouseover", light);
document.addEventListener("click", choose);
document.getElementById("fold").addEventListener("click", () => all("details").forEach(one => one.open = false));
document.getElementById("unfold").addEventListener("click", () => all("details").forEach(one => one.open = true));
field.value = decodeURIComponent(location.hash.slice(1));
filter();
)js";

std::string cell(const std::string& visibleText) {
  return "<td>" + markup(visibleText) + "</td>";
}

// What a click on a box unfolds: each of its units, and the paths by ports.
std::string members(const Picture& picture, std::size_t number) {
  const Picture::Box& box = picture.boxes[number];
  const std::string data = " data-box=\"" + std::to_string(number) + '"';
  std::string text = "<details class=\"members\"" + data + "><summary>" + markup(titleOf(box));
  for (const std::string& mark : box.marks) text += " ! " + markup(mark);
  text +=
      "</summary><table><tr><th>Unit</th><th>Device</th><th>Identifier</th><th>Paths</th></tr>\n";
  for (std::size_t i = 0; i < box.units.size(); ++i) {
    const Unit& unit = *box.units[i];
    std::string paths;
    for (const auto& row : box.rows) {
      paths += (paths.empty() ? "" : ", ") + labelOf(picture.hostPorts, row.hostPort) + ' ' +
               styleOf(row.line).letter + ' ' + visible(row.paths[i]->title()) + ' ' +
               labelOf(picture.targetPorts, row.targetPort);
    }
    text += "<tr" + data + '>' + cell(visible(unit.title())) +
            cell(visible(unit.device.value_or(""))) + cell(visible(unit.identifier)) + cell(paths) +
            "</tr>\n";
  }
  return text + "</table></details>\n";
}

std::string section(const Picture& picture, const PictureLayout& layout, const Band& band) {
  std::size_t units = 0;
  std::string lists;
  for (const PlacedBox& placed : band.boxes) {
    units += picture.boxes[placed.box].units.size();
    lists += members(picture, placed.box);
  }
  std::string ports;
  for (const auto& [placed, all] : {std::pair(&band.hostPorts, &picture.hostPorts),
                                    std::pair(&band.targetPorts, &picture.targetPorts)}) {
    std::set<std::size_t> ordered;
    for (const PlacedPort& one : *placed) ordered.insert(one.port);
    for (const std::size_t port : ordered) ports += ' ' + (*all)[port].label;
  }
  const auto pixels = [](double value) { return std::to_string(static_cast<long>(value + 1)); };
  return "<section><details open><summary>" + counted(units, "unit") +
         (ports.empty() ? "" : " at") + ports + "</summary>\n<div class=\"scroll\"><svg width=\"" +
         pixels(layout.width) + "\" height=\"" + pixels(band.height) + "\">\n" +
         bandAsSvg(picture, layout, band) + "</svg></div>\n" + lists + "</details></section>\n";
}

}  // namespace

std::string pictureAsHtml(const Picture& picture) {
  const PictureLayout layout = layoutOf(picture);
  std::string text =
      std::string(
          "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>\n"
          "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
          "style-src 'unsafe-inline'; script-src '") +
      kScriptHash + "'\"/>\n<title>Multipathed storage</title>\n<style>" + styleSheet() + kStyle +
      "</style></head>\n<body><header><h1>Multipathed storage</h1><p>" + markup(picture.stamp) +
      "</p>\n<input id=\"filter\" type=\"search\" placeholder=\"Filter: unit, device, port (H1), "
      "line (F)\" aria-label=\"Filter\"/>"
      "<button id=\"fold\">Fold all</button><button id=\"unfold\">Unfold all</button> "
      "<span id=\"count\"></span>\n<svg width=\"1100\" height=\"24\">" +
      legendAsSvg() + "</svg></header>\n";
  for (const Band& band : layout.bands) text += section(picture, layout, band);
  if (picture.boxes.empty()) text += "<p class=\"none\">No multipathed units.</p>\n";
  return text + "<script>" + kScript + "</script></body></html>\n";
}

}  // namespace tavrenix::monitor
