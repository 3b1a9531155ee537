#include "cli/state.hpp"

namespace tavrenix::cli {

std::string gToolName;
ObArrayRef gLogicalUnits = nullptr;
std::int32_t gRowNumber = 1;

}  // namespace tavrenix::cli
