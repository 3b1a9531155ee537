// The units and paths of a journal as they are now.
#pragma once

#include "maintain/journal.hpp"

namespace tavrenix::maintain {

// Returns true if the driver does not use the path, because it was disabled or has failed.
bool isOut(const monitor::Path& path);

// Return null if there is none. A path is known again by its identifier and its ports. If Linux has
// numbered the hosts anew since, it is known by its two ports alone. Borrowed from the storage.
const monitor::Unit* findUnit(const monitor::Storage& storage, const UnitRecord& record);
const monitor::Path* findPath(const monitor::Unit& unit, const PathRecord& record);

// Either is null if it is gone.
struct Live {
  const monitor::Unit* unit = nullptr;
  const monitor::Path* path = nullptr;
};
Live liveOf(const monitor::Storage& storage, const UnitRecord& unit, const PathRecord& path);

PathRecord recordOf(const monitor::Path& path);
// Returns true if the path serves its unit less well than before: out of use, or in a worse access
// state.
bool isWorse(const monitor::Path& path, const PathRecord& before);
// "active_optimized", or "out of use".
std::string stateOf(const monitor::Path& path);

// Returns what differs between the journal of an open maintenance and the storage, one line of
// visible text each.
std::vector<std::string> driftOf(const Journal& journal, const monitor::Storage& storage,
                                 const std::string& bootID);

}  // namespace tavrenix::maintain
