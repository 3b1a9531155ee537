// Who stands above and below whom:
//
//   host -> path -> unit -> medium of the whole map -> media that lie on it, and so on
//
// A path is a disk that a map uses; media are the map itself and its holders: partitions, logical
// volumes and whatever else the kernel builds from it. A SCSI target between host and path says
// nothing that anyone asks for, and has no entry.
#pragma once

#include "linux/machine.hpp"

namespace tavrenix::sys {

using Entries = std::vector<EntryID>;

Entries parentsOf(Machine& machine, EntryID id);
Entries childrenOf(Machine& machine, EntryID id);

// The relatives that the iteration options choose: parents level by level, children depth first;
// each once, the entry itself not.
Entries relativesOf(Machine& machine, EntryID id, std::uint32_t options);

// All entries of that class or one derived from it. A negative error number where the driver cannot
// be asked.
Answer<Entries> entriesOfClass(Machine& machine, std::string_view className);

// The entries of these classes that clients can be told of: a map becomes a unit with its first
// table. -EAGAIN where a map could not be read.
Answer<Entries> entriesToTellOf(Machine& machine, const std::vector<std::string>& classes);

bool conformsTo(Kind kind, std::string_view className);

// Whether nothing lies on the medium.
bool isLeaf(Machine& machine, EntryID medium);

}  // namespace tavrenix::sys
