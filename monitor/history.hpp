// What has come, gone and changed between the looks of one process: counts for the metrics that a
// single look cannot give.
#pragma once

#include <map>
#include <set>

#include "monitor/metrics_text.hpp"

namespace tavrenix::monitor {

// Its size is that of the storage: what has departed is only counted.
// Thread safety: none; the caller serialises.
class History {
 public:
  // Compares storage with the one before. The first is where counting begins.
  // unixSeconds: when the storage was read.
  void observe(const LabelledStorage& storage, std::uint64_t unixSeconds);
  void addTo(MetricsText& metrics) const;

 private:
  struct Record {
    std::string condition;  // states and usability in one text
    std::uint64_t changes = 0;
    std::uint64_t lastChange = 0;  // 0 if there was none
  };
  struct Moves {
    std::uint64_t arrivals = 0;
    std::uint64_t departures = 0;
  };

  bool begun_ = false;
  std::set<std::string> units_;          // by their labels
  std::map<std::string, Record> paths_;  // by their labels
  Moves unitMoves_, pathMoves_;
};

}  // namespace tavrenix::monitor
