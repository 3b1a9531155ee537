// The machine as the registry sees it: multipath maps, their paths, SCSI hosts, media.
//
// Everything is looked at when asked for, once in a burst of questions (see burst.hpp). Threads:
// one lock guards what is kept; any operation on any thread.
#pragma once

#include <memory>
#include <mutex>

#include "linux/burst.hpp"
#include "linux/device_mapper.hpp"
#include "linux/disk_counters.hpp"
#include "linux/entry_id.hpp"
#include "linux/files.hpp"
#include "linux/host_port.hpp"
#include "linux/inquiry.hpp"
#include "linux/multipath_status.hpp"
#include "linux/multipath_table.hpp"

namespace tavrenix::sys {

// A map at one moment.
struct Unit {
  DeviceNumber device;
  MapLines lines;                       // its table
  std::optional<MultipathTable> table;  // nothing where no multipath table is in force
  std::vector<DeviceNumber> paths;      // in the order of the table
};

class Machine {
 public:
  // Both are borrowed and outlive the machine.
  Machine(const HostFiles& files, DeviceMapperPort& port,
          Burst::Clock::duration pause = Burst::kPause)
      : files_(files), port_(port), burst_(pause) {}

  // Changes whenever units, paths or tables have changed. 0 where the driver is not there or the
  // caller may not read it.
  std::uint32_t generation();

  // All multipath maps; a negative error number where the driver cannot be asked.
  Answer<std::vector<EntryID>> units();
  // Whether the entry is still there.
  bool exists(EntryID id);

  // The map of the entry; null where it is not a unit or gone.
  std::shared_ptr<const Unit> unit(EntryID id);
  // Nothing where the driver does not tell.
  std::optional<MultipathStatus> status(EntryID unit);
  std::vector<EntryID> pathsOf(const Unit& unit);
  Identity identityOf(EntryID unit);

  // Where a path's disk stands. Null where it is gone.
  std::shared_ptr<const Place> place(EntryID path);
  // Asked of the unit that the path was last found in, since it is the unit's: one question serves
  // all of its paths.
  Identity identityOfPath(EntryID path);
  // The counters of a unit's or a path's device as its file "stat" has them: of this moment, or of
  // one in this burst that has not been told yet. Nothing where the device is gone.
  std::optional<std::string> counters(EntryID id);
  std::optional<EntryID> hostOf(EntryID path);
  // As interconnectOf and portIdentifierOf of host_port.hpp.
  std::string interconnectOfPath(EntryID path);
  std::vector<std::uint8_t> portIdentifierOfHost(EntryID host);

  // The label of the file system on a medium, as udev knows it. Nothing where it has none.
  std::optional<std::string> label(EntryID medium);

  // The ID of what now bears that name. Nothing where nothing does.
  std::optional<EntryID> entry(EntryName name);
  // Forgets everything that may have changed.
  void forget();

  const HostFiles& files() const { return files_; }
  DeviceMapperPort& port() { return port_; }
  // To be called by who has read files on behalf of a caller: the burst goes on.
  void answered();

 private:
  // One question: holds mutex_, and forgets first what may not be told again.
  class Question;

  // Who asks about a few devices is not made to wait for what a machine tells of all.
  static constexpr std::size_t kFewQuestions = 8;

  // These hold mutex_ already.
  void forgetAll();
  void forgetWhatNothingTellsOf();
  std::uint32_t readGeneration();
  std::optional<std::uint64_t> inodeOf(EntryName name);
  void readInodesOfAll(EntryID known);
  bool verify(EntryID id);
  std::shared_ptr<const Place> placeOf(EntryID path);
  std::optional<EntryID> identify(EntryName name);
  std::shared_ptr<const Unit> readUnit(EntryID id);
  Answer<std::shared_ptr<const Unit>> readMap(DeviceNumber device);
  const Identity* rememberIdentity(EntryID unit);
  Identity readIdentity(EntryID path);

  const HostFiles& files_;
  DeviceMapperPort& port_;
  std::mutex mutex_;
  Burst burst_;
  std::uint32_t generation_ = 0;
  // All of this for one burst.
  ob::NumberMap<std::optional<std::uint64_t>> inodes_;  // by link
  ob::NumberMap<std::shared_ptr<const Unit>> units_;
  ob::NumberMap<std::optional<MultipathStatus>> statuses_;
  ob::NumberMap<std::optional<std::string>> labels_;
  std::size_t counterQuestions_ = 0;
  std::optional<DiskCounters> counters_;
  ob::NumberMap<std::shared_ptr<const Place>> places_;
  ob::NumberMap<Identity> identities_;  // of units
  ob::NumberMap<EntryID> unitOfPath_;
  ob::NumberMap<std::string> interconnects_;                  // of hosts
  ob::NumberMap<std::vector<std::uint8_t>> portIdentifiers_;  // of hosts
};

}  // namespace tavrenix::sys
