#include "bench/monitor_bench.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/allocation.hpp"
#include "bench/measured_host.hpp"
#include "monitor/history.hpp"
#include "monitor/json_document.hpp"
#include "monitor/picture_writers.hpp"
#include "monitor/top_model.hpp"

namespace tavrenix::bench {

namespace {

using namespace monitor;

constexpr std::uint64_t kPaths = 8;

std::string metricsOf(const Storage& storage, const LabelledStorage& labelled) {
  MetricsText metrics;
  addMetrics(metrics, {storage.host, labelled, [](const Unit&) { return std::nullopt; }});
  return metrics.text();
}

template <class Work>
void onUnits(benchmark::State& state, Work work) {
  hostWith(static_cast<std::uint64_t>(state.range(0)), kPaths);
  for (auto _ : state) benchmark::DoNotOptimize(work());
}

}  // namespace

void registerMonitorBenchmarks() {
  constexpr std::int64_t kUnits = 1'000;
  const auto add = [](const char* name, auto work) {
    benchmark::RegisterBenchmark(name, [work](benchmark::State& state) { onUnits(state, work); })
        ->Arg(kUnits)
        ->Unit(benchmark::kMicrosecond);
  };
  add("monitor_facts", [] { return readStorage().units.size(); });
  add("monitor_json", [] { return textOf(documentOfUnits(readStorage(), true), false); });
  add("monitor_metrics", [] {
    const Storage storage = readStorage();
    return metricsOf(storage, LabelledStorage(storage));
  });
}

double measureGrowth() {
  hostWith(2, 2);
  History history;
  TopModel model;
  const auto refresh = [&](int times) {
    for (int i = 0; i < times; ++i) {
      const Storage storage = readStorage();
      const LabelledStorage labelled(storage);
      history.observe(labelled, 1);
      metricsOf(storage, labelled);
      model.observe(storage, i);
      pictureAsHtml(pictureOf(storage, 1, true));
    }
    return static_cast<double>(allocatedBytes());
  };
  const double before = refresh(1'000);
  return refresh(99'000) / before;
}

}  // namespace tavrenix::bench
