#include "bench/library_bench.hpp"

#include <benchmark/benchmark.h>
#include <tavrenix/mpio.h>

#include <memory>
#include <vector>

#include "bench/allocation.hpp"
#include "bench/floor.hpp"
#include "bench/measured_host.hpp"
#include "cli/command.hpp"
#include "library/manager.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix::bench {

namespace {

constexpr std::uint64_t kPaths = 8;

std::uint64_t unitsOf(const benchmark::State& state) {
  return static_cast<std::uint64_t>(state.range(0));
}

memory::MemoryHost& hostFor(const benchmark::State& state) {
  return hostWith(unitsOf(state), kPaths);
}

// Makes the library scan, if it has not.
void settle() {
  ObRelease(MPIOCopyLogicalUnits());
}

void runTool(std::initializer_list<const char*> words) {
  std::vector<char*> argv;
  for (const char* word : words) argv.push_back(const_cast<char*>(word));
  argv.push_back(nullptr);
  tavrenixMain(
      static_cast<int>(words.size()), argv.data(), +[]() -> std::uint32_t { return 0; });
  std::fflush(stdout);
}

// Measures, in each iteration, the loading of the library, with its first scan, and a call of
// `first`.
template <class First>
void fromLoading(benchmark::State& state, First first) {
  auto& host = hostFor(state);
  for (auto _ : state) {
    state.PauseTiming();
    MPIOManagerTeardown();
    test::touch(host);
    state.ResumeTiming();
    MPIOManagerInitialize();
    first();
  }
}

void firstScan(benchmark::State& state) {
  fromLoading(state, [] {});
}

void firstScanAndList(benchmark::State& state) {
  fromLoading(state, [] { runTool({"tavrenix", "list"}); });
}

void listAgain(benchmark::State& state) {
  hostFor(state);
  settle();
  for (auto _ : state) runTool({"tavrenix", "list"});
}

void info(benchmark::State& state) {
  hostFor(state);
  settle();
  std::string identifier;
  for (const std::uint8_t byte : test::unitIdentifier(unitsOf(state) - 1)) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%.2X", byte);
    identifier += digits;
  }
  for (auto _ : state) runTool({"tavrenix", "info", "-i", identifier.c_str()});
}

using Elements = std::vector<ObTypeRef>;  // borrowed from the manager, until the generation changes

void append(Elements& elements, ObArrayRef array) {
  const std::size_t count = ObArrayGetCount(array);
  for (std::size_t i = 0; i < count; ++i) elements.push_back(ObArrayGetValueAtIndex(array, i));
  ObRelease(array);
}

Elements allUnits() {
  Elements units;
  append(units, MPIOCopyLogicalUnits());
  return units;
}

Elements allPaths() {
  Elements paths;
  for (ObTypeRef unit : allUnits()) {
    append(paths, MPIOLogicalUnitCopyPaths(static_cast<MPIOLogicalUnitRef>(unit)));
  }
  return paths;
}

// Calls work(0), work(1) and so on, one in each iteration, and begins again after `count`.
template <class Work>
void inTurn(benchmark::State& state, std::uint64_t count, Work work) {
  std::uint64_t next = 0;
  for (auto _ : state) {
    work(next);
    next = next + 1 == count ? 0 : next + 1;
  }
}

void unitProperties(benchmark::State& state) {
  hostFor(state);
  const Elements units = allUnits();
  inTurn(state, units.size(), [&](std::uint64_t at) {
    ObRelease(MPIOLogicalUnitCopyProperties(static_cast<MPIOLogicalUnitRef>(units[at])));
  });
}

void pathProperties(benchmark::State& state) {
  hostFor(state);
  const Elements paths = allPaths();
  inTurn(state, paths.size(), [&](std::uint64_t at) {
    ObRelease(MPIOLogicalUnitPathCopyProperties(static_cast<MPIOLogicalUnitPathRef>(paths[at])));
  });
}

// Returns the floor over the storage of the benchmark. Makes it once for each number of units.
const Floor& floorFor(const benchmark::State& state) {
  static std::uint64_t units = 0;
  static std::unique_ptr<Floor> floor;
  if (units != unitsOf(state)) {
    floor = std::make_unique<Floor>(hostFor(state), unitsOf(state), kPaths);
    units = unitsOf(state);
  }
  return *floor;
}

void firstScanAndListFloor(benchmark::State& state) {
  const Floor& floor = floorFor(state);
  for (auto _ : state) {
    floor.scan();
    floor.list(stdout);
    std::fflush(stdout);
  }
}

template <class Work>
void floorOf(benchmark::State& state, Work work) {
  const Floor& floor = floorFor(state);
  for (auto _ : state) work(floor);
}

std::int64_t bytesKept(std::uint64_t paths) {
  hostWith(10'000, paths);  // scanned already
  const std::int64_t whole = allocatedBytes();
  MPIOManagerTeardown();
  const std::int64_t kept = whole - allocatedBytes();
  MPIOManagerInitialize();
  return kept;
}

}  // namespace

Memory measureMemory() {
  const auto bare = static_cast<double>(bytesKept(0));
  const auto whole = static_cast<double>(bytesKept(kPaths));
  return {(whole - bare) / 10'000 / kPaths, bare / 10'000};
}

void registerLibraryBenchmarks() {
  const auto add = [](const char* name, std::int64_t size, auto function) {
    benchmark::RegisterBenchmark(name, function)->Arg(size)->Unit(benchmark::kMicrosecond);
  };
  for (const std::int64_t size :
       {100, 1'000, 10'000, 100'000}) {  // in this order, so that each storage is made once
    add("first_scan", size, firstScan);
    add("first_scan_floor", size,
        [](benchmark::State& state) { floorOf(state, [](const Floor& floor) { floor.scan(); }); });
    add("first_scan_and_list", size, firstScanAndList);
    add("first_scan_and_list_floor", size, firstScanAndListFloor);
    add("list_again", size, listAgain);
    add("list_floor", size, [](benchmark::State& state) {
      floorOf(state, [](const Floor& floor) {
        floor.list(stdout);
        std::fflush(stdout);
      });
    });
    add("info_of_the_last", size, info);
    add("info_floor", size, [](benchmark::State& state) {
      floorOf(state, [](const Floor& floor) { floor.info(stdout); });
    });
    add("unit_properties", size, unitProperties);
    add("unit_properties_floor", size, [](benchmark::State& state) {
      const Floor& floor = floorFor(state);
      inTurn(state, unitsOf(state), [&](std::uint64_t unit) { floor.unitProperties(unit); });
    });
    add("path_properties", size, pathProperties);
    add("path_properties_floor", size, [](benchmark::State& state) {
      const Floor& floor = floorFor(state);
      inTurn(state, unitsOf(state) * kPaths,
             [&](std::uint64_t path) { floor.pathProperties(path / kPaths, path % kPaths); });
    });
  }
}

}  // namespace tavrenix::bench
