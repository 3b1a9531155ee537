// One scan of the registry into the manager's dictionaries.
#pragma once

#include "library/manager.hpp"

namespace tavrenix {

// The caller holds the manager's lock and has seen the generation move. mode and handle as for
// MPIOManagerRescan.
void scanRegistry(MPIOManager& shared, MPIOHost& host, int mode, const ob::Object* handle);

}  // namespace tavrenix
