// Disk descriptions on Linux, from the udev database and sysfs.
#pragma once

#include "host/backed_registry.hpp"
#include "host/host.hpp"
#include "linux/topology/machine.hpp"

namespace tavrenix::sys {

// A volume is named by the label of the file system on its medium, which udevd has read. The
// description of a medium without a label is empty, because no report shows such a medium.
class LinuxDisks final : public MPIODiskDescriptions {
 public:
  LinuxDisks(Machine& machine, BackedRegistry& registry) : machine_(machine), registry_(registry) {}
  std::optional<DiskDescription> describe(RegistryHandle media) override;

 private:
  std::string deviceName(EntryID medium);

  Machine& machine_;
  BackedRegistry& registry_;
};

}  // namespace tavrenix::sys
