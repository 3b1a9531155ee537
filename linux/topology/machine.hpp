// The machine as the registry sees it: the current snapshot, and the facts that are never kept.
//
// A snapshot is valid until the kernel says otherwise. The kernel numbers its events, and every
// change of maps, paths and hosts comes with one. A poll on device-mapper's control file shows
// changes inside maps. No time decides what is fresh.
//
// Thread safety: any function on any thread.
#pragma once

#include <map>
#include <thread>

#include "linux/kernel/disk_counters.hpp"
#include "linux/topology/snapshot.hpp"
#include "runtime/mutex.hpp"

namespace tavrenix::sys {

// The two states of a path's disk, each read from a file of its own.
struct DiskStates {
  FileText device;  // "running"
  FileText access;  // "active/optimized"
};

class Machine {
 public:
  // Ownership: borrows both, which outlive the machine.
  Machine(const HostFiles& files, DeviceMapperPort& port) : files_(files), port_(port) {}

  // A look: a group of reads by one thread, from the construction of this object to its end. The
  // first read asks the kernel whether the snapshot is still valid; later ones do not. States and
  // counters are read for several paths at once, and each is returned once. A read outside of any
  // look is a look by itself. Looks may be nested: the outermost counts.
  class Look {
   public:
    explicit Look(Machine& machine);
    ~Look();
    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;

   private:
    Machine& machine_;
    const HostFiles::Burst burst_;
    const std::thread::id thread_;
  };

  // Returns a number that no other snapshot has.
  std::uint64_t snapshotNumber() OB_EXCLUDES(mutex_);
  // These do what Snapshot's functions of the same names do, on a valid snapshot.
  std::uint32_t generation() OB_EXCLUDES(mutex_);
  Answer<std::vector<EntryID>> units() OB_EXCLUDES(mutex_);
  bool isUnit(DeviceNumber device) OB_EXCLUDES(mutex_);
  bool exists(EntryID id) OB_EXCLUDES(mutex_);
  std::optional<EntryID> entry(EntryKey name) OB_EXCLUDES(mutex_);
  std::shared_ptr<const Unit> unit(EntryID id) OB_EXCLUDES(mutex_);
  std::vector<EntryID> pathsOf(const Unit& unit) OB_EXCLUDES(mutex_);
  std::shared_ptr<const Place> place(EntryID path) OB_EXCLUDES(mutex_);
  Identity identityOf(EntryID unit) OB_EXCLUDES(mutex_);
  Identity identityOfPath(EntryID path) OB_EXCLUDES(mutex_);
  std::optional<EntryID> hostOf(EntryID path) OB_EXCLUDES(mutex_);
  std::string interconnectOfPath(EntryID path) OB_EXCLUDES(mutex_);
  std::vector<std::uint8_t> portIdentifierOfHost(EntryID host) OB_EXCLUDES(mutex_);

  // Returns the driver's view of the unit's paths, or null if the driver does not answer.
  std::shared_ptr<const MultipathStatus> status(EntryID unit) OB_EXCLUDES(mutex_);
  // Returns the states of the path, or std::nullopt if it is gone.
  std::optional<DiskStates> statesOf(EntryID unit, EntryID path) OB_EXCLUDES(mutex_);
  // Returns the counters of the device of a unit or path, in the form of its file "stat". Returns
  // std::nullopt if the device is gone or they cannot be read.
  std::optional<std::string> counters(EntryID id) OB_EXCLUDES(mutex_);
  // Returns the label of the file system on a medium, from udev's database, or std::nullopt if
  // there is none. udevd writes it some time after the event, so it is kept for as long as udev's
  // record is the same file.
  std::optional<std::string> label(EntryID medium) OB_EXCLUDES(mutex_);

  // Drops the snapshot. Called after a change by the caller, and before a change that must not rely
  // on old facts.
  void forget() OB_EXCLUDES(mutex_);

  const HostFiles& files() const { return files_; }
  DeviceMapperPort& port() { return port_; }

 private:
  // After so many reads of counters in one look, or a list of the units, the others come from one
  // table of all disks.
  static constexpr int kFewCounters = 8;
  // The number of paths whose states are read at once. Each takes two descriptors.
  static constexpr std::size_t kPathsAtOnce = 8;

  // What one thread's outermost look has read.
  struct View {
    int looks = 0;
    bool checked = false;  // that the snapshot is valid
    ob::NumberMap<std::shared_ptr<const MultipathStatus>> statuses;
    ob::NumberMap<DiskStates> states;
    int counterQuestions = 0;
    std::optional<DiskCounters> counters;
  };

  struct KeptLabel {
    HostFiles::Version record;
    std::optional<std::string> label;
  };

  View* view() OB_REQUIRES(mutex_);
  // Returns a valid snapshot; within a look, the one that was valid when the look began.
  Snapshot& snapshot() OB_REQUIRES(mutex_);
  void renew() OB_REQUIRES(mutex_);
  void setSnapshot(Snapshot fresh) OB_REQUIRES(mutex_);
  std::optional<std::uint64_t> lastEvent() OB_REQUIRES(mutex_);
  void readStates(EntryID unit, View& view) OB_REQUIRES(mutex_);

  const HostFiles& files_;
  DeviceMapperPort& port_;
  ob::Mutex mutex_;
  std::optional<Snapshot> snapshot_ OB_GUARDED_BY(mutex_);
  std::uint64_t snapshotNumber_ OB_GUARDED_BY(mutex_) = 0;
  ob::FileDescriptor eventCounter_ OB_GUARDED_BY(mutex_);
  std::map<std::thread::id, View> views_ OB_GUARDED_BY(mutex_);
  ob::NumberMap<KeptLabel> labels_ OB_GUARDED_BY(mutex_);  // of media
};

}  // namespace tavrenix::sys
