// The port to device-mapper through libdevmapper.
#pragma once

#include <mutex>

#include "linux/device_mapper.hpp"

namespace tavrenix::sys {

// One lock for all: libdevmapper keeps state of its own. The library stays silent, unless the
// program has given it a log function already.
class LibDeviceMapper final : public DeviceMapperPort {
 public:
  Answer<std::vector<ListedMap>> list() override;
  Answer<MapLines> read(DeviceNumber map, Lines which) override;
  int load(DeviceNumber map, const Target& table, bool readOnly) override;
  int resume(DeviceNumber map) override;
  int clear(DeviceNumber map) override;
  int message(DeviceNumber map, const std::string& text) override;

 private:
  // 0 once the driver is there to be asked. Never makes it appear.
  int prepare();

  std::mutex mutex_;
  bool prepared_ = false;
};

}  // namespace tavrenix::sys
