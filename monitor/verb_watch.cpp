#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>

#include "monitor/change_list.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/verbs.hpp"

namespace tavrenix::monitor {

namespace {

using Clock = std::chrono::steady_clock;

std::int64_t unixMilliseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// In local time: "2026-11-22 01:15:03.250".
std::string localTime(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm local{};
  ::localtime_r(&seconds, &local);
  char text[40];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  std::snprintf(text + length, sizeof text - length, ".%03d",
                static_cast<int>(milliseconds % 1000));
  return text;
}

// The first line: from now on every change is printed.
void printBegin(const Storage& storage, bool asDocument) {
  const std::int64_t time = unixMilliseconds();
  std::size_t paths = 0;
  for (const Unit& unit : storage.units) paths += unit.paths.size();
  const std::size_t units = storage.units.size();
  if (asDocument) {
    print(textOf({{"time_unix_ms", time}, {"event", "begin"}, {"units", units}, {"paths", paths}},
                 true));
  } else {
    print(localTime(time) + "  " + std::to_string(units) + " units and " + std::to_string(paths) +
          " paths are watched\n");
  }
}

void printChanges(const Storage& before, const Storage& after, bool asDocument) {
  const std::int64_t time = unixMilliseconds();
  std::string lines;
  for (const Change& change : changesBetween(before, after)) {
    if (asDocument) {
      Json object = {{"time_unix_ms", time}};
      object.update(asJson(change));
      lines += textOf(object, true);
    } else {
      lines += localTime(time) + "  " + describe(change) + '\n';
    }
  }
  if (!lines.empty()) print(lines);
}

}  // namespace

// States are compared and not events, which the kernel drops if they are not read in time.
int runWatch(int argc, char** argv) {
  const CommandLine line(argc, argv, {{"json", 'j'}, {"interval", 'n', true}}, 0);
  const std::chrono::seconds interval(line.number('n', 1, 86'400).value_or(2));
  constexpr useconds_t kBetweenGenerations = 200'000;  // microseconds
  Storage known = readStorage();
  printBegin(known, line.has('j'));
  for (auto lastLook = Clock::now();;) {
    ::usleep(kBetweenGenerations);
    // The generation is one cheap question, but a disk's own state does not move it.
    const bool isDue = Clock::now() - lastLook >= interval;
    if (!isDue && readGeneration() == known.host.generation) continue;
    Storage next = readStorage();
    lastLook = Clock::now();
    printChanges(known, next, line.has('j'));
    known = std::move(next);
  }
}

}  // namespace tavrenix::monitor
