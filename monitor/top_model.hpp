// What top shows: units and paths with rates, sorted, filtered and folded, and the row that is
// selected. No terminal is needed for it.
#pragma once

#include <map>
#include <set>

#include "monitor/counter_rates.hpp"

namespace tavrenix::monitor {

struct TopRow {
  // Identifiers of unit and path, each with its number among equal ones. A unit's own has an empty
  // path and -1.
  using Key = std::tuple<std::string, int, std::string, int>;
  Key key;
  bool isUnit = false;
  bool isFolded = false;  // a unit whose paths are not shown
  bool isWell = true;
  bool isCritical = false;
  std::string name, device;  // visible text
  std::string state;         // "2/4" usable paths of a unit; what the path is
  std::optional<Rates> rates;
  std::optional<double> share;  // of the bytes of all paths of its unit, 0 to 1
  // Bytes of the path to the mean of the unit's usable paths in the same access state. Of a unit,
  // the largest of its paths.
  std::optional<double> skew;
  std::optional<double> sinceChange;  // seconds since a change of state was seen
};

enum class TopOrder { name, bytes, read, written, commands, skew, changed, health };
inline constexpr const char* kTopOrders[] = {"name",     "bytes", "read",    "written",
                                             "commands", "skew",  "changed", "health"};

class TopModel {
 public:
  // Takes the next look. seconds: when it was, by a clock that only goes forward.
  void observe(const Storage& storage, double seconds);

  void sortBy(TopOrder order);
  TopOrder order() const { return order_; }
  void reverse();
  // Shows the units with that text in any of their names or in those of a path, in any letter case.
  void filter(const std::string& text);
  const std::string& filter() const { return filter_; }
  void foldAll(bool folds);
  // Folds or unfolds the unit of the selected row.
  void toggleFold();
  // Moves the selection by that many rows, to the first or the last at most.
  void move(std::ptrdiff_t rows);

  const std::vector<TopRow>& rows() const { return rows_; }
  // Position of the selected row; 0 if there are no rows. The selection stays with its unit or
  // path wherever that moves, and with the place if it has gone.
  std::size_t selected() const { return selected_; }
  // "3 units, 1 not well; ..." of all units; visible text.
  const std::string& summary() const { return summary_; }

 private:
  struct Memory {
    Reading reading;
    std::string condition;
    std::optional<double> changedAt;
  };
  struct Entry {
    TopRow unit;
    std::vector<TopRow> paths;
    std::string text;  // what the filter searches, in lower case
  };
  using Memories = std::map<TopRow::Key, Memory>;

  void remember(TopRow& row, const std::optional<Counters>& counters, const std::string& condition,
                double seconds, Memories& next);
  Entry entryOf(const Unit& unit, int number, double seconds, Memories& next);
  void summarise(const Storage& storage);
  bool precedes(const TopRow& one, const TopRow& other) const;
  bool isFolded(const TopRow::Key& unit) const { return folds_ != exceptions_.contains(unit); }
  // Makes the rows anew and finds the selection again.
  void arrange();

  std::vector<Entry> entries_;
  Memories memories_;
  bool begun_ = false;
  TopOrder order_ = TopOrder::bytes;
  bool isReversed_ = false;
  bool folds_ = true;
  std::set<TopRow::Key> exceptions_;  // units that are not as folds_ says
  std::string filter_;
  std::vector<TopRow> rows_;
  std::size_t selected_ = 0;
  std::string summary_;
};

}  // namespace tavrenix::monitor
