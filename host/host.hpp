// The host as the library sees it: all its seams together.
#pragma once

#include <memory>
#include <optional>

#include "host/registry.hpp"
#include "host/storage_details.hpp"
#include "host/tunable.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// The host's description of one medium. Each field may be null.
struct DiskDescription {
  ob::Ref<const ob::String> volumeName;
  ob::Ref<const ob::String> bsdName;    // the device's name
  ob::Ref<const ob::Number> mediaSize;  // bytes
};

// The seam to the host's disk description service.
class MPIODiskDescriptions {
 public:
  virtual ~MPIODiskDescriptions() = default;
  // Returns the description of a media entry, or nothing if the service cannot describe it. Asks
  // the service at every call.
  // Ownership: borrows a handle of the same host's registry.
  // Thread safety: any thread.
  virtual std::optional<DiskDescription> describe(RegistryHandle media) = 0;
};

class MPIOHost {
 public:
  virtual ~MPIOHost() = default;
  virtual MPIODeviceRegistry& registry() = 0;
  virtual MPIOKernelTunable& tunable() = 0;
  virtual MPIODiskDescriptions& disks() = 0;
  // Returns the seam to further details, or null if the host has none.
  virtual MPIODetails* details() { return nullptr; }
  // Begins a look: a group of reads by the calling thread. The look ends when the returned object
  // is destroyed; null is allowed. The host may answer all reads of one look as of one moment,
  // which saves reading things again.
  virtual std::shared_ptr<void> beginLook() { return nullptr; }
  // Returns the effective user ID of the caller. 0 is the superuser.
  virtual std::uint32_t effectiveUser() = 0;
};

// Returns the one host of this executable or shared library. Each host implementation defines this
// function, and one of them is linked. It may be called before main. The host lives as long as the
// process. It answers generation 0 until it knows its storage.
MPIOHost& sharedHost();

}  // namespace tavrenix
