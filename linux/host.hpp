// The host of programs that run on Linux: all seams over one machine.
#pragma once

#include "linux/disks.hpp"
#include "linux/registry.hpp"
#include "linux/tunable.hpp"
#include "model/host.hpp"

namespace tavrenix::sys {

class LinuxHost final : public MPIOHost {
 public:
  // The ports are borrowed and outlive the host. A caller who is not the superuser gets generation
  // 0, as on a machine without the driver, and nothing of the machine is touched.
  LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
            std::uint32_t effectiveUser, Burst::Clock::duration pause = Burst::kPause,
            Notifications::Opener opener = {});

  LinuxRegistry& registry() override { return registry_; }
  LinuxTunable& tunable() override { return tunable_; }
  LinuxDisks& disks() override { return disks_; }
  std::uint32_t effectiveUser() override { return effectiveUser_; }

 private:
  HostFiles files_;
  std::uint32_t effectiveUser_;
  Machine machine_;
  Notifications notifications_;
  LinuxRegistry registry_;
  LinuxTunable tunable_;
  LinuxDisks disks_;
};

}  // namespace tavrenix::sys
