// The storage in the Prometheus text format, version 0.0.4.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "monitor/storage_facts.hpp"

namespace tavrenix::monitor {

// Returns name="value", with the value visible and escaped. Several are joined by commas.
std::string label(const char* name, const std::string& value);

// Families of metrics in the making.
class MetricsText {
 public:
  enum class Type { gauge, counter };
  // Which families are kept: all, those that are not counters, or those that are not of paths.
  enum class Set { all, states, units };
  explicit MetricsText(Set set = Set::all) : set_(set) {}

  // Begins a family: its samples follow. name: with the prefix and, for a counter, "_total".
  void family(const std::string& name, Type type, const std::string& help);
  // labels: as label() makes them; empty if there are none.
  void sample(const std::string& labels, std::uint64_t value);
  void sample(const std::string& labels, double seconds);
  const std::string& text() const { return text_; }

 private:
  void begin(const std::string& labels);
  Set set_;
  bool isKept_ = true;  // the family that has begun
  std::string name_;
  std::string text_;
};

// The units and paths of a storage with the labels that tell each from all others: the identifiers
// of the unit and of the path, with "#2" behind one that another before has as well.
struct LabelledStorage {
  // storage: borrowed.
  explicit LabelledStorage(const Storage& storage);
  std::vector<std::pair<const Unit*, std::string>> units;
  std::vector<std::pair<const Path*, std::string>> paths;
};

// What of a storage goes into metrics.
struct MetricsSource {
  const Host& host;
  const LabelledStorage& storage;
  std::function<std::optional<std::uint64_t>(const Unit&)> expectedPaths;
};

void addMetrics(MetricsText& metrics, const MetricsSource& source);
// The metrics that are there in any case.
void addCollector(MetricsText& metrics, bool success, double seconds);

}  // namespace tavrenix::monitor
