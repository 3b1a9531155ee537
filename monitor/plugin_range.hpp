// A threshold as monitoring plugins write it: "4:" alerts below 4, "10" outside of 0 to 10, "~:10"
// above 10, "@2:4" from 2 to 4.
#pragma once

#include <string>

namespace tavrenix::monitor {

class PluginRange {
 public:
  // Errors: throws Failure, which names the option and the text.
  PluginRange(const std::string& option, const std::string& text);
  bool alerts(double value) const;
  const std::string& text() const { return text_; }

 private:
  std::string text_;
  bool alertsInside_ = false;
  double least_ = 0;
  double most_ = 0;
};

}  // namespace tavrenix::monitor
