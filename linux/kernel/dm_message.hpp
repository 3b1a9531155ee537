// One request to device-mapper and its answer, as linux/dm-ioctl.h lays them out: a header,
// followed by data. Only ask() calls the kernel.
#pragma once

#include <linux/dm-ioctl.h>

#include <string>
#include <vector>

#include "linux/kernel/device_mapper.hpp"

namespace tavrenix::sys {

class DmMessage {
 public:
  // The largest room that ask() gives an answer: enough for the lines of a hundred thousand paths.
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  // Makes a request about the map, or about no single map.
  explicit DmMessage(std::optional<DeviceNumber> map = {}, std::uint32_t flags = 0);

  void setEvent(std::uint32_t number) { head().event_nr = number; }
  // Appends a table of one target.
  void addTarget(const Target& target);
  // Appends a message to the target at sector 0.
  void addText(const std::string& text);

  // Sends the request to the open control file, as a command such as DM_LIST_DEVICES. `room` is the
  // room for the answer in bytes. If the answer does not fit, asks again with four times as much.
  // Errors: a negative error number; -EOVERFLOW if the answer is longer than kMostBytes.
  int ask(int control, unsigned long command, std::size_t room = 4096);

  // Return what the answer says. They never read beyond its end, whatever offsets it holds.
  std::vector<ListedMap> maps() const;
  MapLines lines() const;

 private:
  dm_ioctl& head() { return *reinterpret_cast<dm_ioctl*>(words_.data()); }
  const dm_ioctl& head() const { return *reinterpret_cast<const dm_ioctl*>(words_.data()); }
  std::string_view answer() const;
  void add(const void* bytes, std::size_t count);

  std::vector<std::uint64_t> words_;  // aligned to 8 bytes, as the kernel expects
  std::size_t used_ = sizeof(dm_ioctl);
};

}  // namespace tavrenix::sys
