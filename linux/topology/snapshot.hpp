// What the machine said at one moment: multipath maps, their paths, SCSI hosts.
//
// A fact is read when a caller first asks for it, and then stays for the life of the snapshot.
// States, counters and labels are no part of it, because no event of the kernel announces their
// changes.
//
// Thread safety: none; Machine guards its snapshot.
#pragma once

#include <memory>

#include "linux/kernel/device_mapper.hpp"
#include "linux/kernel/files.hpp"
#include "linux/text/identity.hpp"
#include "linux/text/multipath_lines.hpp"
#include "linux/topology/entry_id.hpp"
#include "runtime/ordered_map.hpp"

namespace tavrenix::sys {

// A map that is a logical unit.
struct Unit {
  DeviceNumber device;
  MapLines lines;                       // its table
  std::optional<MultipathTable> table;  // std::nullopt if no multipath table is in force
  std::vector<DeviceNumber> paths;      // in the order of the table
};

class Snapshot {
 public:
  // Lists the maps. `events` is the kernel's number of its last event, read before this call.
  // Ownership: borrows both, which outlive the snapshot.
  Snapshot(const HostFiles& files, DeviceMapperPort& port, std::optional<std::uint64_t> events);

  const std::optional<std::uint64_t>& events() const { return events_; }
  // Returns a number that changes whenever units, paths or tables change. Returns 0 if the driver
  // is not there or does not answer.
  std::uint32_t generation() const { return generation_; }

  // Returns all multipath maps.
  // Errors: the negative error number of the driver.
  Answer<std::vector<EntryID>> units();
  bool isUnit(DeviceNumber device);
  // Returns the ID of the entry that has this kind and number now, or std::nullopt if there is
  // none.
  std::optional<EntryID> identify(EntryKey name);
  // Returns true if the entry is there. Returns false if another entry has its number now.
  bool has(EntryID id);

  // Returns the unit, or null if the entry is gone or is no unit.
  std::shared_ptr<const Unit> unit(EntryID id);
  // Returns the paths of the unit whose disks exist. A map may still name a disk that is gone.
  std::vector<EntryID> pathsOf(const Unit& unit);
  // Returns where the path's disk is, or null if it has gone.
  std::shared_ptr<const Place> place(EntryID path);
  // Returns the identity that the first path with an answer reports for the unit.
  Identity identityOf(EntryID unit);
  // Returns the identity of the path's unit, so that one read serves all paths of a unit. If no
  // unit with the path has been read, reads the path itself.
  Identity identityOfPath(EntryID path);
  // These return what interconnectOf and portIdentifierOf (ports.hpp) return.
  std::string interconnectOfPath(EntryID path);
  std::vector<std::uint8_t> portIdentifierOfHost(EntryID host);

 private:
  std::optional<std::uint64_t> inodeOf(EntryKey name);
  void listDevices();
  Answer<std::shared_ptr<const Unit>> readMap(DeviceNumber device);
  Identity readIdentity(EntryID path);

  const HostFiles& files_;
  DeviceMapperPort& port_;
  const std::optional<std::uint64_t> events_;
  Answer<std::vector<ListedMap>> maps_;
  std::uint32_t generation_ = 0;
  std::optional<Answer<std::vector<EntryID>>> listedUnits_;
  bool devicesListed_ = false;
  // The inode number of each link, by its key. std::nullopt if there is no such link.
  ob::NumberMap<std::optional<std::uint64_t>> inodes_;
  ob::NumberMap<std::shared_ptr<const Unit>> units_;
  ob::NumberMap<std::shared_ptr<const Place>> places_;
  ob::NumberMap<Identity> identities_;  // of units
  ob::NumberMap<EntryID> unitOfPath_;
  ob::NumberMap<std::string> interconnects_;                  // of hosts
  ob::NumberMap<std::vector<std::uint8_t>> portIdentifiers_;  // of hosts
};

}  // namespace tavrenix::sys
