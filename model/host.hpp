// All of the host that is reached from anywhere.
#pragma once

#include "model/disks.hpp"
#include "model/registry.hpp"
#include "model/tunable.hpp"

namespace tavrenix {

class MPIOHost {
 public:
  virtual ~MPIOHost() = default;
  virtual MPIODeviceRegistry& registry() = 0;
  virtual MPIOKernelTunable& tunable() = 0;
  virtual MPIODiskDescriptions& disks() = 0;
  // The effective user ID of the caller; 0 is the superuser.
  virtual std::uint32_t effectiveUser() = 0;
};

// The one host of this executable or shared library, defined by whichever host it is linked with.
// It may be asked for before main, lives as long as the process, and is not ready until its storage
// is known: it answers generation 0 until then.
MPIOHost& sharedHost();

}  // namespace tavrenix
