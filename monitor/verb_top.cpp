#include <algorithm>
#include <chrono>
#include <thread>

#include "monitor/failure.hpp"
#include "monitor/top_screen.hpp"
#include "monitor/top_text.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

using Clock = std::chrono::steady_clock;

void look(TopModel& model) {
  const Storage storage = readStorage();
  const std::chrono::duration<double> now = Clock::now().time_since_epoch();
  model.observe(storage, now.count());
}

TopOrder orderOf(const std::string& name) {
  std::string known;
  for (std::size_t i = 0; i < std::size(kTopOrders); ++i) {
    if (name == kTopOrders[i]) return static_cast<TopOrder>(i);
    known += (i == 0                           ? ""
              : i + 1 == std::size(kTopOrders) ? " or "
                                               : ", ") +
             std::string(kTopOrders[i]);
  }
  throw Failure("--sort must be " + known + ", not " + visible(name));
}

// A look before the first table, so that each table has rates.
int printTables(TopModel& model, std::uint64_t count, std::chrono::seconds delay) {
  const Screen shownOn = screen();
  const TopText text(shownOn.width, shownOn.asciiOnly);
  look(model);
  for (std::uint64_t i = 0; i < count; ++i) {
    std::this_thread::sleep_for(delay);
    look(model);
    std::string lines = (i == 0 ? "" : "\n") + text.fit(model.summary()) + '\n' + text.heading();
    for (const TopRow& row : model.rows()) lines += '\n' + text.line(row);
    print(lines + '\n');
  }
  return 0;
}

int showTable(TopModel& model, std::chrono::seconds delay) {
  look(model);
  TopScreen shown(screen());
  for (auto due = Clock::now() + delay;;) {
    shown.draw(model);
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - Clock::now());
    const auto wait = std::max<std::int64_t>(0, left.count());
    if (!shown.act(model, static_cast<int>(std::min<std::int64_t>(wait, 60'000)))) return 0;
    if (Clock::now() < due) continue;
    look(model);
    due = Clock::now() + delay;
  }
}

}  // namespace

int runTop(int argc, char** argv) {
  const CommandLine line(argc, argv,
                         {{"batch", 'b'},
                          {"count", 'n', true},
                          {"delay", 'd', true},
                          {"sort", 's', true},
                          {"filter", 'f', true},
                          {"unfold", 'U'}},
                         0);
  const auto count = line.number('n', 1, 1'000'000'000);
  const std::chrono::seconds delay(line.number('d', 1, 86'400).value_or(2));
  if (count && !line.has('b')) throw Failure("--count is for --batch alone; give both");
  TopModel model;
  model.foldAll(!line.has('U'));
  model.filter(line.value('f').value_or(""));
  if (const auto order = line.value('s')) model.sortBy(orderOf(*order));
  return line.has('b') ? printTables(model, count.value_or(1), delay) : showTable(model, delay);
}

}  // namespace tavrenix::monitor
