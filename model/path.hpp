// MPIOLogicalUnitPath: one path to a multipathed logical unit, as the registry and the driver last
// described it.
//
// It keeps entry IDs only and looks its entry up afresh for every read. It has no lock: each
// accessor is atomic by itself, a rebuild as a whole is not.
#pragma once

#include "model/errors.hpp"
#include "model/host.hpp"
#include "runtime/atomic_ref.hpp"
#include "runtime/weak.hpp"

namespace tavrenix {

class MPIOLogicalUnit;

class MPIOLogicalUnitPath final : public ob::Object {
 public:
  static ob::TypeID getTypeID();
  // None where the properties hold no identifier.
  static ob::Ref<const ob::String> logicalUnitPathIdentifierFromPropertiesDict(
      const ob::Dictionary* properties);
  static ob::Ref<const ob::Dictionary> propertiesForEntryID(MPIOHost& host, EntryID entryID);

  // The path of that entry to unit (which may be none: its entry ID is then 0). It is made even
  // where the entry has vanished; what is not known stays absent.
  static ob::Ref<MPIOLogicalUnitPath> initWithKsKitServiceEntry(MPIOHost& host, EntryID entryID,
                                                                const MPIOLogicalUnit* unit);

  // Re-reads registry and driver. What cannot be read keeps its old value.
  void rebuildPropertiesFromEntry();
  // The entry ID of the logical unit below the path's entry, the last one met; 0 where there is
  // none.
  EntryID locateLogicalUnitID() const;
  // The public dictionary of the path as last read.
  ob::Ref<const ob::Dictionary> getProperties() const;

  // Whether the driver says, asked now, that the path is enabled.
  bool isEnabled(ErrorOut error) const;
  // Hand the request to the unit. Without a unit: false, and *error untouched.
  bool enable(ErrorOut error);
  bool disable(ErrorOut error);

  // Writes *statistics only on success. A null pointer fails at once.
  bool grabPathStatsBuffer(EntryID pathEntryID, SCSIPathStatistics* statistics,
                           ErrorOut error) const;
  // The public statistics, read now, which also updates state and enabled flag; none where the read
  // fails.
  ob::Ref<const ob::Dictionary> getCurrentStatistics();

  EntryID serviceEntryID() const noexcept { return serviceEntryID_; }
  EntryID matchingLogicalUnitEntryID() const noexcept { return matchingLogicalUnitEntryID_; }
  // The unit that holds the path now, or none: the path does not own it.
  ob::Ref<MPIOLogicalUnit> matchingLogicalUnit() const;
  void setMatchingLogicalUnit(MPIOLogicalUnit* unit);

  ob::Ref<const ob::String> pathID() const noexcept { return pathID_.load(); }
  ob::Ref<const ob::String> pathState() const noexcept { return pathState_.load(); }
  ob::Ref<const ob::String> interconnectType() const noexcept { return interconnectType_.load(); }
  ob::Ref<const ob::String> vendorID() const noexcept { return vendorID_.load(); }
  ob::Ref<const ob::String> productID() const noexcept { return productID_.load(); }
  ob::Ref<const ob::Data> scsiInitiatorPortIdentifier() const noexcept { return hostPort_.load(); }
  // Values are immutable, so storing one is storing a copy.
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
  // One of the two booleans, or null while no statistics have been read.
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
