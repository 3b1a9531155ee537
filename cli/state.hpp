// The process-wide state of the tool. There is nothing else that lives from one call to the next.
#pragma once

#include <tavrenix/ob.h>

#include <cstdint>
#include <string>

namespace tavrenix::cli {

/// Base name of argv[0].
extern std::string gToolName;
/// The handles of all logical units, copied once a run; every report and every lookup walks this
/// array.
extern ObArrayRef gLogicalUnits;
/// Number of the next row of the logical-unit table. Only grows.
extern std::int32_t gRowNumber;

}  // namespace tavrenix::cli
