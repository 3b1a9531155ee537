#include "monitor/top_text.hpp"

#include <algorithm>
#include <cstdio>

#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

std::string decimal(const std::optional<double>& value, int digits) {
  if (!value) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, *value);
  return text;
}

std::string rate(const TopRow& row, double Rates::*value) {
  if (!row.rates) return "-";
  return readableSize(static_cast<std::uint64_t>((*row.rates).*value));
}

std::string age(const std::optional<double>& seconds) {
  if (!seconds) return "-";
  const auto whole = static_cast<long>(*seconds);
  if (whole < 120) return std::to_string(whole) + " s";
  if (whole < 7200) return std::to_string(whole / 60) + " min";
  return std::to_string(whole / 3600) + " h";
}

struct Column {
  const char* heading;
  std::size_t width;
  int rank;  // the highest are left out first
  std::string (*text)(const TopRow& row);
};

constexpr Column kColumns[] = {
    {"DEVICE", 9, 8, [](const TopRow& row) { return row.isUnit ? row.device : std::string(); }},
    {"STATE", 9, 1, [](const TopRow& row) { return row.state; }},
    {"READ/s", 8, 2, [](const TopRow& row) { return rate(row, &Rates::read); }},
    {"WRITE/s", 8, 3, [](const TopRow& row) { return rate(row, &Rates::written); }},
    {"CMD/s", 8, 5,
     [](const TopRow& row) {
       return decimal(row.rates ? std::optional(row.rates->commands) : std::nullopt, 0);
     }},
    {"SHARE", 5, 4,
     [](const TopRow& row) {
       if (row.isUnit) return std::string();
       return row.share ? decimal(*row.share * 100, 0) + '%' : "-";
     }},
    {"SKEW", 5, 6, [](const TopRow& row) { return decimal(row.skew, 2); }},
    {"CHANGED", 8, 7, [](const TopRow& row) { return age(row.sinceChange); }},
};
// Names from the left, numbers to the right.
std::string cell(const std::string& text, const Column& column) {
  const bool isNumber = column.rank > 1 && column.rank < 8;
  const std::size_t columns = columnsOf(text);
  if (!isNumber || columns >= column.width) return fitted(text, column.width);
  return std::string(column.width - columns, ' ') + text;
}

constexpr std::size_t kLeastName = 12;
constexpr std::size_t kMostName = 40;

}  // namespace

TopText::TopText(std::size_t width, bool asciiOnly) : width_(width), asciiOnly_(asciiOnly) {
  std::vector<std::size_t> byRank;
  for (std::size_t i = 0; i < std::size(kColumns); ++i) byRank.push_back(i);
  std::ranges::sort(byRank, {}, [](std::size_t i) { return kColumns[i].rank; });
  std::size_t used = kLeastName;
  for (const std::size_t i : byRank) {
    if (width != 0 && used + 1 + kColumns[i].width > width) break;
    used += 1 + kColumns[i].width;
    columns_.push_back(i);
  }
  std::ranges::sort(columns_);
  const std::size_t free = width == 0 ? kMostName : width - std::min(width, used);
  nameWidth_ = width == 0 ? kMostName : std::min(kMostName, kLeastName + free);
}

std::string TopText::fit(const std::string& visibleText) const {
  std::string text;
  for (const char c : visibleText) {
    text += asciiOnly_ && static_cast<unsigned char>(c) >= 0x80 ? '?' : c;
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return width_ == 0 || columnsOf(text) <= width_ ? text : fitted(text, width_);
}

std::string TopText::heading() const {
  std::string line = fitted("  NAME", nameWidth_);
  for (const std::size_t i : columns_) line += ' ' + cell(kColumns[i].heading, kColumns[i]);
  return fit(line);
}

std::string TopText::line(const TopRow& row) const {
  const char* mark = !row.isUnit ? "    " : row.isFolded ? "+ " : "- ";
  const char* fault = row.isWell ? "" : row.isCritical ? "!! " : "! ";
  std::string line = fitted(std::string(mark) + fault + row.name, nameWidth_);
  for (const std::size_t i : columns_) {
    line += ' ' + cell(kColumns[i].text(row), kColumns[i]);
  }
  return fit(line);
}

}  // namespace tavrenix::monitor
