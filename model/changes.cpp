// MPIOLogicalUnit: configuration requests to the driver. Each is one dictionary written under
// "Properties" into the unit's own entry.
#include <optional>

#include "model/logical_unit.hpp"
#include "model/registry_names.hpp"

namespace tavrenix {

struct MPIOLogicalUnit::PathStateRequest {
  std::int64_t state;
  std::string_view lackingIdentifiers;
};

// One change: holds the unit's lock from before the request is built until after the write, and the
// entry's handle a little longer.
class MPIOLogicalUnit::Change {
 public:
  // The algorithm family and the path family word the same two failures differently.
  struct Words {
    std::string_view notFound;
    std::string_view refused;
  };
  static constexpr Words kAlgorithmWords{
      "KsServiceGetMatchingService failed to find entry matching specified entry ID",
      "KsRegistryEntrySetObProperty failed"};
  static constexpr Words kPathWords{"Unable to locate needed service in KsRegistry",
                                    "Unable to set property"};

  explicit Change(MPIOLogicalUnit& unit) : unit_(unit), lock_(unit.logicalUnitMutex) {}
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;
  ~Change() {
    lock_.unlock();
    if (entry_ != 0) unit_.host_.registry().release(entry_);  // after the lock
  }

  // False, with *failure where it is wanted, if the entry is gone or the driver refuses.
  bool write(const ob::Dictionary& request, const Words& words, const ob::Error** failure) {
    MPIODeviceRegistry& registry = unit_.host_.registry();
    entry_ = registry.findServiceByEntryID(unit_.serviceEntryID_);
    if (entry_ == 0) return fail(failure, words.notFound, kErrorServiceNotFound, std::nullopt);
    const KernelStatus status = registry.setProperty(entry_, registry::kProperties, request);
    if (status == kSuccess) return true;
    return fail(failure, words.refused, kErrorPropertyWriteFailed, status);
  }

 private:
  static bool fail(const ob::Error** failure, std::string_view message, MPIOErrorCode code,
                   std::optional<KernelStatus> status) {
    if (failure != nullptr) *failure = MPIOErrorCreate(message, code, status);
    return false;
  }

  MPIOLogicalUnit& unit_;
  RegistryHandle entry_ = 0;
  std::unique_lock<std::mutex> lock_;
};

namespace {

constexpr std::string_view kEnableLackingIdentifiers =
    "Attempt to enable LUN with paths lacking IDs";
constexpr std::string_view kDisableLackingIdentifiers =
    "Attempt to disable LUN with paths lacking IDs";

bool report(bool done, const ob::Error* failure, ErrorOut error) {
  if (error != nullptr) *error = failure;
  return done;
}

// Bit tests, unlike the exact comparisons of getProperties: the lowest known bit wins.
const ob::String* algorithmName(std::uint32_t code) {
  if ((code & kMPIOAlgorithmLeastBytes) != 0) return &registry::kLeastBytes;
  if ((code & kMPIOAlgorithmLeastQueueDepth) != 0) return &registry::kLeastQueueDepth;
  if ((code & kMPIOAlgorithmRoundRobin) != 0) return &registry::kModifiedRoundRobin;
  return nullptr;
}

// Both keys always go together.
ob::Ref<const ob::Dictionary> algorithmRequest(const ob::String& name, std::uint32_t batchCount) {
  ob::DictionaryBuilder request(2);
  request.add(registry::kAlgorithm, ob::Ref<const ob::String>::retain(&name));
  request.add(registry::kBatchCount, ob::Number::make(std::int64_t{batchCount}));
  return request.build();
}

ob::Ref<const ob::Dictionary> pathStateRequest(ob::DictionaryBuilder& states) {
  ob::DictionaryBuilder request(1);
  request.add(registry::kPathState, states.build());
  return request.build();
}

}  // namespace

bool MPIOLogicalUnit::setAlgorithm(std::uint32_t code, ErrorOut error) {
  const ob::Error* failure = nullptr;
  const bool done = code != 0 && requestAlgorithm(code, &failure);
  return report(done, failure, error);
}

bool MPIOLogicalUnit::requestAlgorithm(std::uint32_t code, const ob::Error** failure) {
  Change change(*this);
  const ob::String* name = algorithmName(code);
  if (name == nullptr) {
    *failure = MPIOErrorCreate("Bad parameter. algorithmString string is nil", kErrorBadArgument);
    return false;
  }
  const auto request = algorithmRequest(*name, batchCount_);
  if (!change.write(*request, Change::kAlgorithmWords, failure)) return false;
  algorithm_ = code;  // as given, not just the bit that was sent
  return true;
}

bool MPIOLogicalUnit::setBatchCount(std::uint32_t count, ErrorOut error) {
  const ob::Error* failure = nullptr;
  const bool done = requestBatchCount(count, &failure);
  return report(done, failure, error);
}

bool MPIOLogicalUnit::requestBatchCount(std::uint32_t count, const ob::Error** failure) {
  Change change(*this);  // before the argument is looked at, unlike setAlgorithm
  if (count == 0) {
    *failure =
        MPIOErrorCreate("Bad value for batchCount.  Must be greater than 0", kErrorBadArgument);
    return false;
  }
  const ob::String* name = algorithmName(algorithm_);
  if (name == nullptr) return false;
  // No error object for a failed write, unlike setAlgorithm: kept.
  if (!change.write(*algorithmRequest(*name, count), Change::kAlgorithmWords, nullptr))
    return false;
  batchCount_ = count;
  return true;
}

bool MPIOLogicalUnit::changePath(const MPIOLogicalUnitPath* path, const PathStateRequest& wanted,
                                 ErrorOut error) {
  if (path == nullptr) return report(false, nullptr, error);
  const ob::Error* failure = nullptr;
  bool done = false;
  {
    Change change(*this);
    if (const auto identifier = path->pathID()) {
      ob::DictionaryBuilder states(1);
      states.add(*identifier, ob::Number::make(wanted.state));
      done = change.write(*pathStateRequest(states), Change::kPathWords, &failure);
    } else {
      failure = MPIOErrorCreate(wanted.lackingIdentifiers, kErrorPathsLackIdentifiers);
    }
  }
  return report(done, failure, error);
}

bool MPIOLogicalUnit::changeAllPaths(const PathStateRequest& wanted, ErrorOut error) {
  const ob::Error* failure = nullptr;
  bool done = false;
  {
    Change change(*this);
    ob::DictionaryBuilder states(8);
    for (const auto& [key, path] : paths_) {
      if (const auto identifier = path->pathID()) {
        states.add(*identifier, ob::Number::make(wanted.state));
      }
    }
    if (states.size() != 0) {
      done = change.write(*pathStateRequest(states), Change::kPathWords, &failure);
    } else {
      failure = MPIOErrorCreate(wanted.lackingIdentifiers, kErrorPathsLackIdentifiers);
    }
  }
  return report(done, failure, error);
}

bool MPIOLogicalUnit::enablePath(const MPIOLogicalUnitPath* path, ErrorOut error) {
  return changePath(path, {registry::kMPIOPathStateRequestEnable, kEnableLackingIdentifiers},
                    error);
}

bool MPIOLogicalUnit::disablePath(const MPIOLogicalUnitPath* path, ErrorOut error) {
  return changePath(path, {registry::kMPIOPathStateRequestDisable, kDisableLackingIdentifiers},
                    error);
}

bool MPIOLogicalUnit::enableAllPaths(ErrorOut error) {
  return changeAllPaths({registry::kMPIOPathStateRequestEnable, kEnableLackingIdentifiers}, error);
}

bool MPIOLogicalUnit::disableAllPaths(ErrorOut error) {
  return changeAllPaths({registry::kMPIOPathStateRequestDisable, kDisableLackingIdentifiers},
                        error);
}

bool MPIOLogicalUnit::isPathEnabled(const MPIOLogicalUnitPath* path, ErrorOut error) const {
  return path != nullptr && path->isEnabled(error);
}

}  // namespace tavrenix
