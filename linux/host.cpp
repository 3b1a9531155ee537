#include "linux/host.hpp"

namespace tavrenix::sys {

LinuxHost::LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
                     std::uint32_t effectiveUser, Clock::duration recent)
    : files_(std::move(files)),
      effectiveUser_(effectiveUser),
      machine_(files_, port, recent),
      registry_(machine_, daemon),
      tunable_(machine_, effectiveUser == 0),
      disks_(machine_, registry_) {}

}  // namespace tavrenix::sys
