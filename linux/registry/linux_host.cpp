#include "linux/registry/linux_host.hpp"

namespace tavrenix::sys {

LinuxHost::LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
                     std::uint32_t effectiveUser, StorageListener::Opener opener)
    : files_(std::move(files)),
      effectiveUser_(effectiveUser),
      machine_(files_, port),
      backing_(
          machine_, daemon,
          opener ? std::move(opener)
                 : [this] { return EventSource::open(EventSource::groupOf(files_)); }),
      tunable_(machine_, backing_, effectiveUser == 0),
      details_(machine_, effectiveUser == 0) {}

}  // namespace tavrenix::sys
