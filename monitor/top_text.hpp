// The lines of top, for a terminal and for --batch alike.
#pragma once

#include "monitor/top_model.hpp"

namespace tavrenix::monitor {

// As many columns as fit into width, the most important ones; 0 is no limit. Lines are visible text
// without a newline.
class TopText {
 public:
  TopText(std::size_t width, bool asciiOnly);
  std::string heading() const;
  std::string line(const TopRow& row) const;
  // Visible text cut at the width, in ASCII if the terminal knows no more.
  std::string fit(const std::string& visibleText) const;

 private:
  std::size_t width_, nameWidth_;
  bool asciiOnly_;
  std::vector<std::size_t> columns_;  // positions in the table of columns
};

}  // namespace tavrenix::monitor
