// The port to device-mapper through the kernel's own interface, linux/dm-ioctl.h.
//
// libdevmapper would do the same, but that of Debian 12 asks for no uuids in the list of maps, it
// obeys environment variables, and loading it with what it needs takes longer than all else that
// `tavrenix list` does on a machine of some dozen units.
#pragma once

#include <mutex>

#include "linux/device_mapper.hpp"

namespace tavrenix::sys {

// Keeps /dev/mapper/control open from its first question on.
class KernelDeviceMapper final : public DeviceMapperPort {
 public:
  KernelDeviceMapper() = default;
  KernelDeviceMapper(const KernelDeviceMapper&) = delete;
  KernelDeviceMapper& operator=(const KernelDeviceMapper&) = delete;
  ~KernelDeviceMapper() override;

  Answer<std::vector<ListedMap>> list() override;
  Answer<MapLines> read(DeviceNumber map, Lines which) override;
  int load(DeviceNumber map, const Target& table, bool readOnly) override;
  int resume(DeviceNumber map) override;
  int clear(DeviceNumber map) override;
  int message(DeviceNumber map, const std::string& text) override;

 private:
  // The control file, or a negative error number. Never makes the driver appear.
  int control();

  std::mutex mutex_;
  int file_ = -1;
};

}  // namespace tavrenix::sys
