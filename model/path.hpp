// MPIOLogicalUnitPath: one path to a multipathed logical unit, as the registry and the driver last
// described it.
//
// A path keeps entry IDs, and finds its entry again for every read.
// Thread safety: there is no lock. Each accessor is atomic by itself; a rebuild is not atomic as a
// whole.
#pragma once

#include "host/host.hpp"
#include "model/errors.hpp"
#include "runtime/atomic_ref.hpp"
#include "runtime/weak.hpp"

namespace tavrenix {

class MPIOLogicalUnit;

class MPIOLogicalUnitPath final : public ob::Object {
 public:
  static ob::TypeID getTypeID();
  // Returns the identifier, or null if there are no properties or they hold none.
  static ob::Ref<const ob::String> logicalUnitPathIdentifierFromPropertiesDict(
      const ob::Dictionary* properties);
  static ob::Ref<const ob::Dictionary> propertiesForEntryID(MPIOHost& host, EntryID entryID);

  // Returns a path object for the entry, even if the entry is gone: values that cannot be read are
  // absent. `unit` is the unit that the path leads to, or null if it is not known.
  static ob::Ref<MPIOLogicalUnitPath> initWithKsKitServiceEntry(MPIOHost& host, EntryID entryID,
                                                                const MPIOLogicalUnit* unit);

  // Reads the registry and the driver again. A value that cannot be read stays as it was.
  void rebuildPropertiesFromEntry();
  // Returns the entry ID of the last logical unit below the path's entry, or 0 if there is none.
  EntryID locateLogicalUnitID() const;
  // Returns the public dictionary, made of the values as they were last read.
  ob::Ref<const ob::Dictionary> getProperties() const;

  // Asks the driver. Returns true if the path is enabled, and false also if the driver does not
  // answer.
  bool isEnabled(ErrorOut error) const;
  // Pass the request to the unit. If the unit is gone, they return false and leave *error alone.
  bool enable(ErrorOut error);
  bool disable(ErrorOut error);

  // Asks the driver for a path's record and stores it in *statistics. Returns false, and stores
  // none, if the driver does not answer or `statistics` is null.
  bool grabPathStatsBuffer(EntryID pathEntryID, SCSIPathStatistics* statistics,
                           ErrorOut error) const;
  // Reads the counters and returns the public statistics, or null if the read fails. Also updates
  // the state and the enabled flag of the path.
  ob::Ref<const ob::Dictionary> getCurrentStatistics();

  EntryID serviceEntryID() const noexcept { return serviceEntryID_; }
  EntryID matchingLogicalUnitEntryID() const noexcept { return matchingLogicalUnitEntryID_; }
  // Returns the unit that holds the path now, or null. The path does not own it.
  ob::Ref<MPIOLogicalUnit> matchingLogicalUnit() const;
  void setMatchingLogicalUnit(MPIOLogicalUnit* unit);

  ob::Ref<const ob::String> pathID() const noexcept { return pathID_.load(); }
  ob::Ref<const ob::String> pathState() const noexcept { return pathState_.load(); }
  ob::Ref<const ob::String> interconnectType() const noexcept { return interconnectType_.load(); }
  ob::Ref<const ob::String> vendorID() const noexcept { return vendorID_.load(); }
  ob::Ref<const ob::String> productID() const noexcept { return productID_.load(); }
  ob::Ref<const ob::Data> scsiInitiatorPortIdentifier() const noexcept { return hostPort_.load(); }
  // Setters store the value itself: it is immutable, so no copy is needed.
  void setPathID(ob::Ref<const ob::String> value) noexcept { pathID_.store(std::move(value)); }
  void setPathState(ob::Ref<const ob::String> value) noexcept {
    pathState_.store(std::move(value));
  }
  void setInterconnectType(ob::Ref<const ob::String> value) noexcept {
    interconnectType_.store(std::move(value));
  }
  void setScsiInitiatorPortIdentifier(ob::Ref<const ob::Data> value) noexcept {
    hostPort_.store(std::move(value));
  }
  // Returns whether the path is enabled, or null if no statistics have been read yet.
  const ob::Boolean* pathEnabled() const noexcept { return pathEnabled_.load(); }

  ob::TypeID typeID() const noexcept override { return getTypeID(); }

 private:
  template <class T, class... Args>
  friend ob::Ref<T> ob::make(Args&&... args);
  MPIOLogicalUnitPath(MPIOHost& host, EntryID entryID, EntryID unitEntryID) noexcept
      : host_(host), serviceEntryID_(entryID), matchingLogicalUnitEntryID_(unitEntryID) {}

  void takeHostPort(RegistryHandle entry);
  void takeState(std::uint8_t state) noexcept;

  MPIOHost& host_;
  const EntryID serviceEntryID_;
  const EntryID matchingLogicalUnitEntryID_;
  ob::AtomicRef<ob::WeakCell<MPIOLogicalUnit>> matchingLogicalUnit_;
  std::atomic<const ob::Boolean*> pathEnabled_{nullptr};
  ob::AtomicRef<const ob::String> pathID_;
  ob::AtomicRef<const ob::String> pathState_;
  ob::AtomicRef<const ob::String> interconnectType_;
  ob::AtomicRef<const ob::String> vendorID_;
  ob::AtomicRef<const ob::String> productID_;
  ob::AtomicRef<const ob::Data> hostPort_;
};

}  // namespace tavrenix
