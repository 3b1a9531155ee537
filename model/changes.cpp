// MPIOLogicalUnit: configuration requests to the driver. Each is one dictionary, written to the
// property "Properties" of the unit's entry.
#include <optional>

#include "host/registry_names.hpp"
#include "model/logical_unit.hpp"
#include "model/public_values.hpp"

namespace tavrenix {

struct MPIOLogicalUnit::PathStateRequest {
  std::int64_t state;
  std::string_view lackingIdentifiers;
};

// One change. Locks the unit's mutex for its whole life: the request is built and written under it.
// Releases the entry's handle after the lock.
class MPIOLogicalUnit::Change {
 public:
  // The messages of the two failures of a write. Changes of settings and changes of paths have
  // different ones. Fixed: scripts depend on them.
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

  // Returns false if the entry is gone or the driver refuses. Stores the error in *failure unless
  // failure is null.
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
  std::unique_lock<ob::Mutex> lock_;
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

// The driver expects both keys in each request.
ob::Ref<const ob::Dictionary> algorithmRequest(const Algorithm& algorithm,
                                               std::uint32_t batchCount) {
  ob::DictionaryBuilder request(2);
  request.add(registry::kAlgorithm, ob::Ref<const ob::String>::retain(&algorithm.registryName));
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
  // Takes the lowest of several bits. getProperties() instead takes several bits for least bytes.
  const Algorithm* algorithm = algorithmOfLowestBit(code);
  if (algorithm == nullptr) {
    *failure = MPIOErrorCreate("Bad parameter. algorithmString string is nil", kErrorBadArgument);
    return false;
  }
  const auto request = algorithmRequest(*algorithm, batchCount_);
  if (!change.write(*request, Change::kAlgorithmWords, failure)) return false;
  algorithm_ = code;  // all its bits, not only the one that was sent
  return true;
}

bool MPIOLogicalUnit::setBatchCount(std::uint32_t count, ErrorOut error) {
  const ob::Error* failure = nullptr;
  const bool done = requestBatchCount(count, &failure);
  return report(done, failure, error);
}

bool MPIOLogicalUnit::requestBatchCount(std::uint32_t count, const ob::Error** failure) {
  Change change(*this);  // locks before it checks the argument, unlike setAlgorithm
  if (count == 0) {
    *failure =
        MPIOErrorCreate("Bad value for batchCount.  Must be greater than 0", kErrorBadArgument);
    return false;
  }
  const Algorithm* algorithm = algorithmOfLowestBit(algorithm_);
  if (algorithm == nullptr) return false;
  // Fixed: a failed write stores no error object here, but does in setAlgorithm. Clients depend on
  // it.
  const auto request = algorithmRequest(*algorithm, count);
  if (!change.write(*request, Change::kAlgorithmWords, nullptr)) return false;
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
