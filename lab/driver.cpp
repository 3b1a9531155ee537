#include "lab/driver.hpp"

#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/registry_names.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

bool isAlgorithm(std::string_view name) {
  return name == registry::kLeastBytes.view() || name == registry::kLeastQueueDepth.view() ||
         name == registry::kModifiedRoundRobin.view();
}

bool changeAlgorithm(Image& image, const ImageEntry& unit, const ob::Dictionary& request) {
  const auto* algorithm = request.valueAs<ob::String>(registry::kAlgorithm);
  const auto* count = request.valueAs<ob::Number>(registry::kBatchCount);
  if (request.pairs().size() != 2 || algorithm == nullptr || count == nullptr) return false;
  const auto batchCount = count->asUInt64();
  if (!isAlgorithm(algorithm->view()) || !batchCount) return false;
  if (*batchCount > std::numeric_limits<std::uint32_t>::max()) return false;
  image.setProperty(unit, std::string(registry::kLoadBalancingAlgorithm.view()), algorithm->view());
  image.setProperty(unit, std::string(registry::kBatchCount.view()), *batchCount);
  return true;
}

// Paths by identifier, in hexadecimal. Several paths may have the same identifier.
using NamedPaths = std::unordered_map<std::string, std::vector<const ImageEntry*>>;

NamedPaths pathsOf(const Image& image, const ImageEntry& unit) {
  NamedPaths paths;
  for (const EntryID id : unit.parents) {
    const ImageEntry* parent = image.find(id);
    if (!parent->isPath) continue;
    const auto* identifier = parent->properties->valueAs<ob::Data>(registry::kPathIdentifier);
    if (identifier != nullptr) paths[ob::hexadecimal(identifier->bytes())].push_back(parent);
  }
  return paths;
}

struct StateChange {
  const ImageEntry* path;
  std::uint8_t state;
};

std::optional<std::uint8_t> requestedState(std::uint8_t state, const ob::Object& request) {
  const auto* number = ob::as<ob::Number>(&request);
  const auto code = number == nullptr ? std::nullopt : number->asInt64();
  if (code == registry::kMPIOPathStateRequestEnable) {
    return static_cast<std::uint8_t>(state & ~kPathStateDisabledBit);
  }
  if (code == registry::kMPIOPathStateRequestDisable) {
    return static_cast<std::uint8_t>(state | kPathStateDisabledBit);
  }
  return std::nullopt;
}

bool changePathStates(Image& image, const ImageEntry& unit, const ob::Dictionary& request) {
  const auto* requests = request.valueAs<ob::Dictionary>(registry::kPathState);
  if (request.pairs().size() != 1 || requests == nullptr || requests->pairs().empty()) return false;
  const NamedPaths paths = pathsOf(image, unit);
  std::vector<StateChange> changes;
  for (const auto& [text, code] : requests->pairs()) {
    const auto named = paths.find(std::string(text->view()));
    if (named == paths.end()) return false;
    for (const ImageEntry* path : named->second) {
      if (!path->statistics) return false;
      const auto state = requestedState(path->statistics->state, *code);
      if (!state) return false;
      changes.push_back({path, *state});
    }
  }
  for (const StateChange& change : changes) image.setPathState(*change.path, change.state);
  return true;
}

// Returns the next generation. Skips 0, which stands for a driver that is not there.
std::uint32_t nextGeneration(std::uint32_t generation) {
  return generation == std::numeric_limits<std::uint32_t>::max() ? 1 : generation + 1;
}

}  // namespace

KernelStatus actOnWrite(Image& image, EntryID entryID, const ob::String& name,
                        const ob::Object& value) {
  const ImageEntry* unit = image.find(entryID);
  const auto* request = ob::as<ob::Dictionary>(&value);
  if (unit == nullptr || request == nullptr || name.view() != registry::kProperties.view())
    return kBadRequest;
  if (!image.classes().conforms(unit->className, registry::kLogicalUnitClass)) return kBadRequest;
  const bool isPathRequest = request->value(registry::kPathState) != nullptr;
  const bool done = isPathRequest ? changePathStates(image, *unit, *request)
                                  : changeAlgorithm(image, *unit, *request);
  if (!done) return kBadRequest;
  image.setGeneration(nextGeneration(image.generation()));
  return kSuccess;
}

}  // namespace tavrenix::lab
