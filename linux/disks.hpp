// Disk descriptions on Linux, from the udev database and sysfs.
#pragma once

#include "linux/registry.hpp"
#include "model/disks.hpp"

namespace tavrenix::sys {

// The volume's name is the label of the file system on the medium. A medium without one is
// described by nothing more, since nobody lists it. Without udevd there are no labels.
class LinuxDisks final : public MPIODiskDescriptions {
 public:
  LinuxDisks(Machine& machine, const LinuxRegistry& registry)
      : machine_(machine), registry_(registry) {}
  std::optional<DiskDescription> describe(RegistryHandle media) override;

 private:
  std::string deviceName(EntryID medium);

  Machine& machine_;
  const LinuxRegistry& registry_;
};

}  // namespace tavrenix::sys
