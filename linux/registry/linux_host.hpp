// The host of programs that run on Linux: all seams over one machine.
#pragma once

#include "host/backed_registry.hpp"
#include "linux/registry/linux_details.hpp"
#include "linux/registry/linux_disks.hpp"
#include "linux/registry/linux_tunable.hpp"

namespace tavrenix::sys {

class LinuxHost final : public MPIOHost {
 public:
  // If the effective user is not the superuser, the generation is 0, as on a machine without the
  // driver, and the machine is not read. Without an opener, events come from the kernel or from
  // udevd.
  // Ownership: borrows the ports, which outlive the host.
  LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
            std::uint32_t effectiveUser, StorageListener::Opener opener = {});

  BackedRegistry& registry() override { return registry_; }
  LinuxTunable& tunable() override { return tunable_; }
  LinuxDisks& disks() override { return disks_; }
  std::shared_ptr<void> beginLook() override { return std::make_shared<Machine::Look>(machine_); }
  LinuxDetails* details() override { return &details_; }
  std::uint32_t effectiveUser() override { return effectiveUser_; }

 private:
  HostFiles files_;
  std::uint32_t effectiveUser_;
  Machine machine_;
  LinuxBacking backing_;
  BackedRegistry registry_{backing_};
  LinuxTunable tunable_;
  LinuxDisks disks_{machine_, registry_};
  LinuxDetails details_;
};

}  // namespace tavrenix::sys
