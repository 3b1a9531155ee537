#include "linux/host.hpp"

namespace tavrenix::sys {

LinuxHost::LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
                     std::uint32_t effectiveUser, Burst::Clock::duration pause)
    : files_(std::move(files)),
      effectiveUser_(effectiveUser),
      machine_(files_, port, pause),
      registry_(machine_, daemon),
      tunable_(machine_, effectiveUser == 0),
      disks_(machine_, registry_) {}

}  // namespace tavrenix::sys
