#include "linux/selectors.hpp"

#include "model/registry_names.hpp"

namespace tavrenix::sys {

namespace {

// service-time sends a request where the fewest bytes, by throughput, are on their way.
constexpr Selector kSelectors[] = {
    {kRoundRobinSelector, &registry::kModifiedRoundRobin, false},
    {"queue-length", &registry::kLeastQueueDepth, false},
    {"service-time", &registry::kLeastBytes, true},
};

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

}  // namespace tavrenix::sys
