// A host over a recorded machine, or over files that a test writes.
#pragma once

#include <filesystem>

#include "linux/host.hpp"
#include "tests/linux/fake_daemon.hpp"
#include "tests/linux/fake_device_mapper.hpp"

namespace tavrenix::test {

// The recorded machine of that name: "states" or "volumes". Its maps are those that dmsetup told
// of, its files are the recording itself. Nothing is kept from one question to the next.
class RecordedMachine {
 public:
  explicit RecordedMachine(const std::string& name, std::uint32_t user = 0);

  sys::LinuxRegistry& registry() { return host.registry(); }
  // The entry of the device of that number.
  EntryID id(sys::Kind kind, sys::DeviceNumber device) const;
  ob::Ref<const ob::Dictionary> properties(EntryID entry);
  std::vector<EntryID> relatives(EntryID entry, std::uint32_t options);

  std::string root;
  FakeDeviceMapper port;
  FakeDaemon daemon;
  sys::LinuxHost host;
};

// A copy of a recorded machine that a test may change, gone with the test.
class CopiedMachine {
 public:
  explicit CopiedMachine(const std::string& name);
  CopiedMachine(const CopiedMachine&) = delete;
  CopiedMachine& operator=(const CopiedMachine&) = delete;
  ~CopiedMachine() { std::filesystem::remove_all(root); }
  void write(const std::string& path, const std::string& content) const;

  std::filesystem::path root;
};

// Fills port with what `dmsetup table`, `status` and `info -c` printed into files below root.
void loadRecordedMaps(FakeDeviceMapper& port, const std::string& root);

std::string textUnder(const ob::Dictionary& properties, const ob::String& name);
std::string hexUnder(const ob::Dictionary& properties, const ob::String& name);

}  // namespace tavrenix::test
