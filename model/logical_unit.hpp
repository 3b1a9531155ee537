// MPIOLogicalUnit: one multipathed logical unit, its paths, its volumes, and the requests that
// change how the driver uses it.
//
// A unit keeps its entry ID and finds its entry again for every read and write.
// Ownership: a unit owns its paths. They refer back without owning it.
// Thread safety: construction, getProperties, addPath, removePath and every change lock
// logicalUnitMutex, which is not recursive. The other functions take no lock. Each getter is atomic
// by itself. Clients serialise the calls that read or change the set of paths.
#pragma once

#include "model/path.hpp"
#include "runtime/mutex.hpp"

namespace tavrenix {

class MPIOLogicalUnit final : public ob::Object {
 public:
  using Paths = ob::NumberMap<ob::Ref<MPIOLogicalUnitPath>>;  // by path key

  static ob::TypeID getTypeID();
  // Returns the identifier, or null if there are no properties or they hold none.
  static ob::Ref<const ob::String> logicalUnitIdentifierFromPropertiesDict(
      const ob::Dictionary* properties);
  static ob::Ref<const ob::Dictionary> propertiesForEntryID(MPIOHost& host, EntryID entryID);
  // Returns the volume dictionary of a media entry. Returns null for handle 0, and if the medium
  // cannot be described or has no volume name. Ownership: borrows the handle.
  static ob::Ref<const ob::Dictionary> volumeInfoForLUNVolume(MPIOHost& host, RegistryHandle media);

  // Returns the unit of that entry, even if the entry cannot be read.
  static ob::Ref<MPIOLogicalUnit> initWithKsKitServiceEntry(MPIOHost& host, EntryID entryID);

  // Reads the registry again. A value that is absent or cannot be read stays as it was.
  void rebuildPropertiesFromEntry() OB_REQUIRES(logicalUnitMutex);
  // Returns the public dictionary, read afresh.
  ob::Ref<const ob::Dictionary> getProperties();

  // Adds the path under the key, which is its entry ID. Does nothing if the key is taken.
  void addPath(MPIOLogicalUnitPath* path, std::uint64_t pathKey);
  void removePath(MPIOLogicalUnitPath* path);
  // Unlike removePath, takes no lock, and lets the paths still refer to the unit.
  void removeAllPaths();
  ob::Ref<const ob::Array> getPaths() const;
  ob::Ref<const ob::Array> getPathIDs() const;

  // Changes. Each writes one request to the unit's entry and returns true if the driver has carried
  // it out. The next read shows the effect.
  // Errors: *error is assigned in every case, to null if there is no error object. `code`: bits of
  // MPIOAlgorithm; the lowest counts. 0 fails without an error object.
  bool setAlgorithm(std::uint32_t code, ErrorOut error);
  // `count`: at least 1. If the entry is missing or the driver refuses, there is no error object,
  // unlike in setAlgorithm.
  bool setBatchCount(std::uint32_t count, ErrorOut error);
  bool enablePath(const MPIOLogicalUnitPath* path, ErrorOut error);
  bool disablePath(const MPIOLogicalUnitPath* path, ErrorOut error);
  bool enableAllPaths(ErrorOut error);
  bool disableAllPaths(ErrorOut error);
  // Returns path->isEnabled(error). Returns false and leaves *error alone if the path is null.
  bool isPathEnabled(const MPIOLogicalUnitPath* path, ErrorOut error) const;

  // Returns the driver's counters, or zeros if the driver did not answer.
  SCSILogicalUnitStatistics grabStatsBuffer(EntryID unitEntryID) const;
  // Returns the public statistics, read now.
  ob::Ref<const ob::Dictionary> getCurrentStatistics() const;

  EntryID serviceEntryID() const noexcept { return serviceEntryID_; }
  ob::Ref<const ob::String> logicalUnitID() const noexcept { return logicalUnitID_.load(); }
  ob::Ref<const ob::String> logicalUnitAlias() const noexcept { return alias_.load(); }
  // Changes this object and not the registry. The next rebuild takes the registry's alias, if it
  // has one.
  void setLogicalUnitAlias(ob::Ref<const ob::String> alias) noexcept {
    alias_.store(std::move(alias));
  }
  ob::Ref<const ob::String> logicalUnitVendorID() const noexcept { return vendorID_.load(); }
  ob::Ref<const ob::String> logicalUnitProductID() const noexcept { return productID_.load(); }
  std::uint32_t logicalUnitAlgorithm() const noexcept { return algorithm_.load(); }
  std::uint32_t logicalUnitBatchCount() const noexcept { return batchCount_.load(); }
  ob::Ref<const ob::Array> logicalUnitVolumesArray() const noexcept { return volumes_.load(); }
  const Paths& logicalUnitPaths() const noexcept { return paths_; }

  // Returns a reference to the unit that does not own it, for the paths to keep.
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
  ob::Mutex logicalUnitMutex;
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
