// What a selection would take out, and whether that may be done.
#pragma once

#include "maintain/journal.hpp"
#include "maintain/selection.hpp"

namespace tavrenix::maintain {

// Returns the plan: every path of each unit that has a selected path, as it is now. accepted: names
// of units that may lose their last usable or last optimized path.
// Errors: throws monitor::Failure if the selection is no good, or if a name names no such unit.
Journal planFor(const monitor::Storage& storage, const Selection& selection,
                const std::vector<std::string>& accepted);

// Returns why the plan must not be carried out, one line of visible text each.
std::vector<std::string> refusalsOf(const Journal& plan);

// Throws monitor::Failure if the storage is no longer as the plan or the journal needs it: a unit
// or path has gone, a path that stays has become worse, a path has changed its use behind the
// maintenance, or a unit would keep no usable path or no optimized one.
void expectPlanToHold(const Journal& journal, const monitor::Storage& storage);

}  // namespace tavrenix::maintain
