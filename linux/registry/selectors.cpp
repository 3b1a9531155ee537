#include "linux/registry/selectors.hpp"

#include "host/registry_names.hpp"

namespace tavrenix::sys {

namespace {

// service-time chooses the path with the fewest bytes under way, weighed by throughput.
constexpr Selector kSelectors[] = {
    {kRoundRobinSelector, &registry::kModifiedRoundRobin, false},
    {"queue-length", &registry::kLeastQueueDepth, false},
    {"service-time", &registry::kLeastBytes, true},
};

void removeSelectors(MultipathTable& table) {
  table.initialGroup = 0;
  std::erase(table.features, kQueueFeature);
  for (auto& group : table.groups) {
    group.selector.clear();
    group.selectorArguments.clear();
    for (auto& path : group.paths) path.arguments.clear();
  }
}

}  // namespace

const Selector* selectorNamed(std::string_view name) {
  for (const auto& selector : kSelectors) {
    if (selector.name == name) return &selector;
  }
  return nullptr;
}

const Selector* selectorForAlgorithm(std::string_view algorithm) {
  for (const auto& selector : kSelectors) {
    if (selector.algorithm->view() == algorithm) return &selector;
  }
  return nullptr;
}

std::string commonSelector(const MultipathTable& table) {
  for (const auto& group : table.groups) {
    if (group.selector != table.groups.front().selector) return {};
  }
  return table.groups.empty() ? std::string() : table.groups.front().selector;
}

std::uint64_t repeatCount(const MultipathTable& table) {
  for (const auto& group : table.groups) {
    if (selectorNamed(group.selector) == nullptr) continue;
    for (const auto& path : group.paths) {
      if (path.arguments.empty()) continue;
      if (const auto count = parseNumber(path.arguments.front())) return *count;
    }
  }
  return 0;
}

MultipathTable withSelector(MultipathTable table, const Selector& selector, std::uint64_t repeat) {
  for (auto& group : table.groups) {
    const Selector* former = selectorNamed(group.selector);
    const bool hadThroughput = former != nullptr && former->takesThroughput;
    group.selector = selector.name;
    group.selectorArguments.clear();
    for (auto& path : group.paths) {
      const bool keep = hadThroughput && path.arguments.size() == 2;
      const std::string throughput = keep ? path.arguments[1] : "1";
      path.arguments = {std::to_string(repeat)};
      if (selector.takesThroughput) path.arguments.push_back(throughput);
    }
  }
  return table;
}

bool differInSelectorsAlone(MultipathTable table, MultipathTable other) {
  removeSelectors(table);
  removeSelectors(other);
  return table == other;
}

}  // namespace tavrenix::sys
