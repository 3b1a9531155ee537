// A picture in each of its forms. No text of a device reaches one of them unescaped.
#pragma once

#include "monitor/output.hpp"
#include "monitor/picture_layout.hpp"

namespace tavrenix::monitor {

// Returns visible text as it stands in XML and HTML, in elements and in quoted attributes.
std::string markup(const std::string& visibleText);

// The rules by which edges, ports and boxes of a band are painted, as CSS.
std::string styleSheet();
// One band as SVG elements, at its own upper left corner.
std::string bandAsSvg(const Picture& picture, const PictureLayout& layout, const Band& band);
// What the lines mean, as SVG elements of one line.
std::string legendAsSvg();

std::string pictureAsSvg(const Picture& picture);
// One file that fetches nothing: filter, highlighting of what is under the pointer, folding.
std::string pictureAsHtml(const Picture& picture);
std::string pictureAsDot(const Picture& picture);
std::string pictureAsText(const Picture& picture, const Screen& screen);

}  // namespace tavrenix::monitor
