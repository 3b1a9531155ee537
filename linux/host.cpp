#include "linux/host.hpp"

#include "linux/tree.hpp"

namespace tavrenix::sys {

LinuxHost::LinuxHost(HostFiles files, DeviceMapperPort& port, PathDaemon& daemon,
                     std::uint32_t effectiveUser, Burst::Clock::duration pause,
                     Notifications::Opener opener)
    : files_(std::move(files)),
      effectiveUser_(effectiveUser),
      machine_(files_, port, pause),
      notifications_(
          [this](const std::string& className) {
            machine_.forget();
            return entriesOfClass(machine_, className);
          },
          opener ? std::move(opener)
                 : [this] { return EventSource::open(EventSource::groupOf(files_)); }),
      registry_(machine_, daemon, notifications_),
      tunable_(machine_, notifications_, effectiveUser == 0),
      disks_(machine_, registry_) {}

}  // namespace tavrenix::sys
