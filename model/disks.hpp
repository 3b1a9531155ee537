// The seam to the host's disk description service.
#pragma once

#include <optional>

#include "model/registry.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// What the service says of one medium. Each part may be absent.
struct DiskDescription {
  ob::Ref<const ob::String> volumeName;
  ob::Ref<const ob::String> bsdName;    // the device's name
  ob::Ref<const ob::Number> mediaSize;  // bytes
};

class MPIODiskDescriptions {
 public:
  virtual ~MPIODiskDescriptions() = default;
  // The description of a media entry of the same host's registry, borrowed for the call. None where
  // the service cannot describe it. Every call asks afresh, in a session of its own. Any thread.
  virtual std::optional<DiskDescription> describe(RegistryHandle media) = 0;
};

}  // namespace tavrenix
