// How entries are related:
//
//   host -> path -> unit -> medium of the whole map -> media that lie on it, and so on
//
// A path is a disk that a map uses. Media are the map itself and its holders: partitions, logical
// volumes and whatever else the kernel builds from it. The SCSI target between host and path has no
// properties that clients read, and so no entry.
#pragma once

#include "linux/topology/machine.hpp"

namespace tavrenix::sys {

using Entries = std::vector<EntryID>;

Entries parentsOf(Machine& machine, EntryID id);
Entries childrenOf(Machine& machine, EntryID id);

// Returns the relatives that the iteration options choose, without the entry itself: parents level
// by level, children depth first, each once.
Entries relativesOf(Machine& machine, EntryID id, std::uint32_t options);

// Returns all entries of that class or of a class that derives from it.
// Errors: the negative error number of the driver.
Answer<Entries> entriesOfClass(Machine& machine, std::string_view className);

// Returns the entries of these classes that are announced to clients. A map without a table is not
// among them, because it is no unit yet.
// Errors: -EAGAIN if a map could not be read, or the driver's own.
Answer<Entries> announcedEntries(Machine& machine, const std::vector<std::string>& classes);

bool conformsTo(Kind kind, std::string_view className);

// Returns true if nothing lies on the medium. Returns false if that cannot be read.
bool isLeaf(Machine& machine, EntryID medium);

}  // namespace tavrenix::sys
