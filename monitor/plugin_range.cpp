#include "monitor/plugin_range.hpp"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::optional<double> bound(std::string_view text, double ifEmpty) {
  if (text.empty()) return ifEmpty;
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
  if (error != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

}  // namespace

PluginRange::PluginRange(const std::string& option, const std::string& text) : text_(text) {
  std::string_view rest = text_;
  alertsInside_ = rest.starts_with('@');
  if (alertsInside_) rest.remove_prefix(1);
  const std::size_t colon = rest.find(':');
  const bool hasBoth = colon != std::string_view::npos;
  const std::string_view first = hasBoth ? rest.substr(0, colon) : std::string_view();
  const auto least = first == "~" ? -kInfinity : bound(first, 0);
  const auto most = bound(hasBoth ? rest.substr(colon + 1) : rest, kInfinity);
  if (rest.empty() || !least || !most || *least > *most) {
    throw Failure(option + " must be a range such as 4: or 2:8 or @0:1, not " + visible(text));
  }
  least_ = *least;
  most_ = *most;
}

bool PluginRange::alerts(double value) const {
  const bool isInside = value >= least_ && value <= most_;
  return isInside == alertsInside_;
}

}  // namespace tavrenix::monitor
