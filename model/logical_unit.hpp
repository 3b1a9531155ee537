// MPIOLogicalUnit: one multipathed logical unit, its paths, its volumes, and the requests that
// change how the driver uses it.
//
// It keeps its entry ID and looks its entry up afresh for every read and write. It owns its paths;
// they refer back without owning it. Threads: logicalUnitMutex, which is not recursive, is held by
// construction, getProperties, addPath, removePath and every configuration change. The other
// operations take no lock; each getter is atomic by itself. Clients serialise what touches the
// paths.
#pragma once

#include <mutex>

#include "model/path.hpp"

namespace tavrenix {

// Bit values. Where several are set, the lowest known bit names the algorithm of a request.
enum MPIOAlgorithm : std::uint32_t {
  kMPIOAlgorithmLeastBytes = 4,
  kMPIOAlgorithmLeastQueueDepth = 8,
  kMPIOAlgorithmRoundRobin = 16,
};

class MPIOLogicalUnit final : public ob::Object {
 public:
  using Paths = ob::NumberMap<ob::Ref<MPIOLogicalUnitPath>>;  // by path key

  static ob::TypeID getTypeID();
  // None where the properties are none or hold no identifier.
  static ob::Ref<const ob::String> logicalUnitIdentifierFromPropertiesDict(
      const ob::Dictionary* properties);
  static ob::Ref<const ob::Dictionary> propertiesForEntryID(MPIOHost& host, EntryID entryID);
  // The volume dictionary of a media entry, borrowed for the call; none for handle 0, and for a
  // medium that cannot be described or has no volume name.
  static ob::Ref<const ob::Dictionary> volumeInfoForLUNVolume(MPIOHost& host, RegistryHandle media);

  // The unit of that entry, made even where the entry cannot be read.
  static ob::Ref<MPIOLogicalUnit> initWithKsKitServiceEntry(MPIOHost& host, EntryID entryID);

  // Re-reads the registry. What is absent or cannot be read keeps its old value. The caller holds
  // logicalUnitMutex.
  void rebuildPropertiesFromEntry();
  // The public dictionary, read afresh.
  ob::Ref<const ob::Dictionary> getProperties();

  // Under a key that is taken the path already there stays.
  void addPath(MPIOLogicalUnitPath* path, std::uint64_t pathKey);
  void removePath(MPIOLogicalUnitPath* path);
  // Takes no lock and leaves the paths' reference to the unit, both unlike removePath.
  void removeAllPaths();
  ob::Ref<const ob::Array> getPaths() const;
  ob::Ref<const ob::Array> getPathIDs() const;

  // Changes: each asks the driver by one write into the unit's entry and reports whether the write
  // was taken. What became of it shows at the next read. *error is always assigned, null included.
  bool setAlgorithm(std::uint32_t code, ErrorOut error);
  // count: at least 1. A missing entry or a refused write gives no error object, unlike
  // setAlgorithm.
  bool setBatchCount(std::uint32_t count, ErrorOut error);
  bool enablePath(const MPIOLogicalUnitPath* path, ErrorOut error);
  bool disablePath(const MPIOLogicalUnitPath* path, ErrorOut error);
  bool enableAllPaths(ErrorOut error);
  bool disableAllPaths(ErrorOut error);
  // The path's own answer. A null path: false, and *error untouched.
  bool isPathEnabled(const MPIOLogicalUnitPath* path, ErrorOut error) const;

  // Zeros where the driver does not answer.
  SCSILogicalUnitStatistics grabStatsBuffer(EntryID unitEntryID) const;
  // The public statistics, read now.
  ob::Ref<const ob::Dictionary> getCurrentStatistics() const;

  EntryID serviceEntryID() const noexcept { return serviceEntryID_; }
  ob::Ref<const ob::String> logicalUnitID() const noexcept { return logicalUnitID_.load(); }
  ob::Ref<const ob::String> logicalUnitAlias() const noexcept { return alias_.load(); }
  // In the object only: the next rebuild overwrites it where the registry has an alias.
  void setLogicalUnitAlias(ob::Ref<const ob::String> alias) noexcept {
    alias_.store(std::move(alias));
  }
  ob::Ref<const ob::String> logicalUnitVendorID() const noexcept { return vendorID_.load(); }
  ob::Ref<const ob::String> logicalUnitProductID() const noexcept { return productID_.load(); }
  std::uint32_t logicalUnitAlgorithm() const noexcept { return algorithm_.load(); }
  std::uint32_t logicalUnitBatchCount() const noexcept { return batchCount_.load(); }
  ob::Ref<const ob::Array> logicalUnitVolumesArray() const noexcept { return volumes_.load(); }
  const Paths& logicalUnitPaths() const noexcept { return paths_; }

  // What its paths keep to find it while it lives.
  ob::Ref<ob::WeakCell<MPIOLogicalUnit>> weakCell() const noexcept { return anchor_.cell(); }

  ob::TypeID typeID() const noexcept override { return getTypeID(); }

 private:
  class Change;
  struct PathStateRequest;

  template <class T, class... Args>
  friend ob::Ref<T> ob::make(Args&&... args);
  MPIOLogicalUnit(MPIOHost& host, EntryID entryID) : host_(host), serviceEntryID_(entryID) {}

  void takeAlgorithm(const ob::Dictionary& properties);
  void rebuildVolumes();
  bool requestAlgorithm(std::uint32_t code, const ob::Error** failure);
  bool requestBatchCount(std::uint32_t count, const ob::Error** failure);
  bool changePath(const MPIOLogicalUnitPath* path, const PathStateRequest& wanted, ErrorOut error);
  bool changeAllPaths(const PathStateRequest& wanted, ErrorOut error);

  MPIOHost& host_;
  const EntryID serviceEntryID_;
  std::mutex logicalUnitMutex;  // here, since each call touches it and what is above anyway
  ob::AtomicRef<const ob::String> logicalUnitID_;
  ob::AtomicRef<const ob::String> alias_;
  ob::AtomicRef<const ob::String> vendorID_;
  ob::AtomicRef<const ob::String> productID_;
  std::atomic<std::uint32_t> algorithm_{0};  // 0 until the registry has reported one
  std::atomic<std::uint32_t> batchCount_{0};
  ob::AtomicRef<const ob::Array> volumes_;
  Paths paths_{8};
  ob::WeakAnchor<MPIOLogicalUnit> anchor_{this};
};

}  // namespace tavrenix
