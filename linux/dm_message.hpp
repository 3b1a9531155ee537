// One question to device-mapper and its answer, as linux/dm-ioctl.h lays them out: a head, and
// behind it what belongs to it. Pure but for ask().
#pragma once

#include <linux/dm-ioctl.h>

#include <string>
#include <vector>

#include "linux/device_mapper.hpp"

namespace tavrenix::sys {

class DmMessage {
 public:
  // No answer is longer; a driver that says so is not believed.
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  // About no map, or about that one.
  explicit DmMessage(std::optional<DeviceNumber> map = {}, std::uint32_t flags = 0);

  void setEvent(std::uint32_t number) { head().event_nr = number; }
  // Puts a table of one target behind the head.
  void addTarget(const Target& target);
  // Puts a message to the target at sector 0 behind the head.
  void addText(const std::string& text);

  // Sends it to the open control file as that command, DM_LIST_DEVICES and so on; with room for the
  // answer, in bytes, and more as long as it does not fit. 0 or a negative error number.
  int ask(int control, unsigned long command, std::size_t room = 4096);

  // The answer. Its texts end where the answer ends, whatever it says of itself.
  std::vector<ListedMap> maps() const;
  MapLines lines() const;

 private:
  dm_ioctl& head() { return *reinterpret_cast<dm_ioctl*>(words_.data()); }
  const dm_ioctl& head() const { return *reinterpret_cast<const dm_ioctl*>(words_.data()); }
  std::string_view answer() const;
  void add(const void* bytes, std::size_t count);

  std::vector<std::uint64_t> words_;  // aligned as the kernel aligns
  std::size_t used_ = sizeof(dm_ioctl);
};

}  // namespace tavrenix::sys
