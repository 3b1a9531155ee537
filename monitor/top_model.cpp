#include "monitor/top_model.hpp"

#include <algorithm>
#include <cctype>

#include "monitor/health.hpp"
#include "monitor/text_table.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

constexpr int kNoPath = -1;

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string stateOf(const Path& path) {
  if (path.driverState == "failed") return "failed";
  if (!path.enabled) return "disabled";
  constexpr const char* kShort[] = {"optimized", "nonoptim.", "standby", "unavail."};
  const auto* const found = std::ranges::find(kStates, path.state);
  return found == std::end(kStates) ? path.state : kShort[found - std::begin(kStates)];
}

TopRow::Key unitOf(const TopRow::Key& key) {
  return {std::get<0>(key), std::get<1>(key), {}, kNoPath};
}

// Nothing if the rate of any of them is not known, or if there is no traffic.
std::optional<double> bytesOf(const std::vector<TopRow*>& rows) {
  double sum = 0;
  for (const TopRow* row : rows) {
    if (!row->rates) return std::nullopt;
    sum += row->rates->bytes();
  }
  return sum > 0 ? std::optional(sum) : std::nullopt;
}

// paths: of the unit, in its order.
void addShares(const Unit& unit, TopRow& ofUnit, std::vector<TopRow>& paths) {
  std::vector<TopRow*> all;
  std::map<std::string, std::vector<TopRow*>> groups;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    all.push_back(&paths[i]);
    if (isUsable(unit.paths[i])) groups[unit.paths[i].state].push_back(&paths[i]);
  }
  if (const auto sum = bytesOf(all)) {
    for (TopRow* row : all) row->share = row->rates->bytes() / *sum;
  }
  for (const auto& [state, group] : groups) {
    const auto sum = bytesOf(group);
    if (group.size() < 2 || !sum) continue;
    for (TopRow* row : group) {
      row->skew = row->rates->bytes() * static_cast<double>(group.size()) / *sum;
      ofUnit.skew = std::max(ofUnit.skew.value_or(0), *row->skew);
    }
  }
}

// What rows are sorted by, the largest first; nothing goes last.
std::optional<double> weightOf(const TopRow& row, TopOrder order) {
  const auto rate = [&](auto value) -> std::optional<double> {
    return row.rates ? std::optional<double>(value(*row.rates)) : std::nullopt;
  };
  switch (order) {
    case TopOrder::name:
      return 0;
    case TopOrder::bytes:
      return rate([](const Rates& rates) { return rates.bytes(); });
    case TopOrder::read:
      return rate([](const Rates& rates) { return rates.read; });
    case TopOrder::written:
      return rate([](const Rates& rates) { return rates.written; });
    case TopOrder::commands:
      return rate([](const Rates& rates) { return rates.commands; });
    case TopOrder::skew:
      return row.skew;
    case TopOrder::changed:
      return row.sinceChange ? std::optional(-*row.sinceChange) : std::nullopt;
    case TopOrder::health:
      return row.isCritical ? 2 : row.isWell ? 0 : 1;
  }
  return std::nullopt;
}

}  // namespace

void TopModel::remember(TopRow& row, const std::optional<Counters>& counters,
                        const std::string& condition, double seconds, Memories& next) {
  Memory& memory = next[row.key];
  const auto found = memories_.find(row.key);
  if (found == memories_.end()) {
    memory.reading = {counters, seconds};
    if (begun_) memory.changedAt = seconds;
  } else {
    const Memory& before = found->second;
    memory.reading = readingAfter(before.reading, counters, seconds);
    row.rates = ratesBetween(before.reading, memory.reading);
    memory.changedAt = before.condition == condition ? before.changedAt : seconds;
  }
  memory.condition = condition;
  if (memory.changedAt) row.sinceChange = seconds - *memory.changedAt;
}

TopModel::Entry TopModel::entryOf(const Unit& unit, int number, double seconds, Memories& next) {
  Entry entry;
  entry.text =
      unit.identifier + '\n' + visible(unit.title()) + '\n' + visible(unit.device.value_or(""));
  std::map<std::string, int> seen;
  std::string conditions = unit.suspended == true ? "suspended" : "";
  for (const Path& path : unit.paths) {
    TopRow& row = entry.paths.emplace_back();
    row.key = {unit.identifier, number, path.identifier, seen[path.identifier]++};
    row.name = visible(path.title());
    row.device = visible(path.hostPort.value_or(""));
    row.state = visible(stateOf(path));
    row.isWell = faultOf(path).empty();
    remember(row, path.counters, row.state + '/' + path.deviceState.value_or(""), seconds, next);
    conditions += '\n' + path.identifier + '=' + next[row.key].condition;
    entry.text += '\n' + row.name + '\n' + row.device + '\n' + row.state;
  }
  TopRow& row = entry.unit;
  row.key = {unit.identifier, number, {}, kNoPath};
  row.isUnit = true;
  row.name = visible(unit.title());
  row.device = visible(unit.device.value_or(""));
  row.state = std::to_string(usablePaths(unit)) + '/' + std::to_string(unit.paths.size());
  for (const Finding& finding : findingsOf(unit, std::nullopt)) {
    row.isWell = false;
    row.isCritical = row.isCritical || finding.isCritical;
  }
  remember(row, unit.counters, conditions, seconds, next);
  addShares(unit, row, entry.paths);
  entry.text = lowerCase(entry.text);
  return entry;
}

void TopModel::observe(const Storage& storage, double seconds) {
  Memories next;
  std::map<std::string, int> seen;
  entries_.clear();
  for (const Unit& unit : storage.units) {
    entries_.push_back(entryOf(unit, seen[unit.identifier]++, seconds, next));
  }
  memories_ = std::move(next);
  begun_ = true;
  std::erase_if(exceptions_, [&](const auto& key) { return !memories_.contains(key); });
  summarise(storage);
  arrange();
}

void TopModel::summarise(const Storage& storage) {
  std::size_t faulty = 0, paths = 0;
  Rates all;
  for (const Entry& entry : entries_) {
    paths += entry.paths.size();
    if (!entry.unit.isWell) ++faulty;
    if (!entry.unit.rates) continue;
    all.read += entry.unit.rates->read;
    all.written += entry.unit.rates->written;
  }
  const auto rate = [](double value) {
    return readableSize(static_cast<std::uint64_t>(value)) + "/s";
  };
  summary_ = storage.host.driverPresent == false ? "The multipath driver is not present. " : "";
  summary_ += counted(entries_.size(), "unit") + ", " + std::to_string(faulty) + " not well; " +
              counted(paths, "path") + "; read " + rate(all.read) + ", written " +
              rate(all.written);
}

void TopModel::sortBy(TopOrder order) {
  order_ = order;
  arrange();
}

void TopModel::reverse() {
  isReversed_ = !isReversed_;
  arrange();
}

void TopModel::filter(const std::string& text) {
  filter_ = text;
  arrange();
}

void TopModel::foldAll(bool folds) {
  folds_ = folds;
  exceptions_.clear();
  arrange();
}

void TopModel::toggleFold() {
  if (rows_.empty()) return;
  const TopRow::Key unit = unitOf(rows_[selected_].key);
  if (exceptions_.erase(unit) == 0) exceptions_.insert(unit);
  arrange();
}

void TopModel::move(std::ptrdiff_t rows) {
  if (rows_.empty()) return;
  const auto last = static_cast<std::ptrdiff_t>(rows_.size()) - 1;
  const auto wanted = static_cast<std::ptrdiff_t>(selected_) + rows;
  selected_ = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(wanted, 0, last));
}

bool TopModel::precedes(const TopRow& one, const TopRow& other) const {
  const auto first = weightOf(one, order_), second = weightOf(other, order_);
  if (first.has_value() != second.has_value()) return first.has_value();
  if (first != second) return isReversed_ ? *first < *second : *first > *second;
  const auto names = [](const TopRow& row) { return std::tie(row.name, row.key); };
  const bool isSwapped = isReversed_ && order_ == TopOrder::name;
  return isSwapped ? names(other) < names(one) : names(one) < names(other);
}

void TopModel::arrange() {
  const auto known = rows_.empty() ? TopRow::Key{} : rows_[selected_].key;
  const auto before = [this](const TopRow& one, const TopRow& other) {
    return precedes(one, other);
  };
  const std::string wanted = lowerCase(filter_);
  std::vector<Entry*> shown;
  for (Entry& entry : entries_) {
    if (entry.text.find(wanted) != std::string::npos) shown.push_back(&entry);
  }
  std::ranges::sort(shown, before, [](const Entry* entry) -> const TopRow& { return entry->unit; });
  rows_.clear();
  for (Entry* entry : shown) {
    entry->unit.isFolded = isFolded(entry->unit.key);
    rows_.push_back(entry->unit);
    if (entry->unit.isFolded) continue;
    std::ranges::sort(entry->paths, before);
    rows_.insert(rows_.end(), entry->paths.begin(), entry->paths.end());
  }
  auto found = std::ranges::find(rows_, known, &TopRow::key);
  if (found == rows_.end()) found = std::ranges::find(rows_, unitOf(known), &TopRow::key);
  if (found != rows_.end()) selected_ = static_cast<std::size_t>(found - rows_.begin());
  selected_ = rows_.empty() ? 0 : std::min(selected_, rows_.size() - 1);
}

}  // namespace tavrenix::monitor
