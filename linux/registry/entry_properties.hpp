// The properties of entries, under the registry's names.
#pragma once

#include "linux/topology/machine.hpp"
#include "runtime/collections.hpp"

namespace tavrenix::sys {

// Thread safety: any function on any thread.
class EntryProperties {
 public:
  // Ownership: borrows the machine, which outlives this object.
  explicit EntryProperties(Machine& machine) : machine_(machine) {}

  // Returns all properties, or null if the entry has gone.
  ob::Ref<const ob::Dictionary> all(EntryID id) OB_EXCLUDES(mutex_);

  // Returns one property, or null if the entry does not have it.
  ob::Ref<const ob::Object> one(EntryID id, const ob::String& name) OB_EXCLUDES(mutex_);

 private:
  ob::Ref<const ob::Dictionary> keptOrMade(EntryID id) OB_EXCLUDES(mutex_);

  Machine& machine_;
  ob::Mutex mutex_;
  // Of units and hosts, as they are in the snapshot of that number. Clients ask for those of a unit
  // several times in a report, and for those of a host once for each path.
  ob::NumberMap<ob::Ref<const ob::Dictionary>> kept_ OB_GUARDED_BY(mutex_);
  std::uint64_t snapshot_ OB_GUARDED_BY(mutex_) = 0;
};

// Returns the identifier of a path. Requests name a path by the identifier in upper-case
// hexadecimal digits.
std::vector<std::uint8_t> identifierOfPath(Machine& machine, EntryID path);

}  // namespace tavrenix::sys
