// A host over a copy of a recorded machine, which a test may change.
#pragma once

#include "linux/host.hpp"
#include "tests/linux/fake_daemon.hpp"
#include "tests/linux/fake_device_mapper.hpp"
#include "tests/linux/scratch.hpp"

namespace tavrenix::test {

class RecordedMachine {
 public:
  struct Options {
    std::uint32_t user = 0;
    sys::Burst::Clock::duration pause = sys::Burst::Clock::duration::zero();  // keeps nothing
    sys::Notifications::Opener opener = {};
  };
  // name: "states" or "volumes". The maps are those that dmsetup told of.
  explicit RecordedMachine(const std::string& name) : RecordedMachine(name, Options{}) {}
  RecordedMachine(const std::string& name, Options options);

  // Paths are absolute on the machine.
  void write(const std::string& path, const std::string& content) const;
  void remove(const std::string& path) const { std::filesystem::remove(root + path); }

  sys::LinuxRegistry& registry() { return host.registry(); }
  // Entries by the number of their device: 254:minor is a map, 8:minor a disk.
  EntryID unit(std::uint32_t minor) const { return id(sys::Kind::kUnit, {254, minor}); }
  EntryID medium(std::uint32_t minor) const { return id(sys::Kind::kMedium, {254, minor}); }
  EntryID path(std::uint32_t minor) const { return id(sys::Kind::kPath, {8, minor}); }
  FakeDeviceMapper::Map& map(std::uint32_t minor) { return port.maps.at({254, minor}); }
  bool has(EntryID entry) {
    return bool(ScopedHandle(registry(), registry().findServiceByEntryID(entry)));
  }
  // Everything that the entry says of itself, as text() below.
  std::string says(EntryID entry);
  std::vector<EntryID> relatives(EntryID entry, std::uint32_t options);
  std::vector<EntryID> ofClass(std::string_view className);

  const Scratch scratch;
  const std::string root = scratch.folder();
  FakeDeviceMapper port;
  FakeDaemon daemon;
  sys::LinuxHost host;

 private:
  std::vector<EntryID> all(RegistryResult<RegistryHandle> iterator);
  EntryID id(sys::Kind kind, sys::DeviceNumber device) const;
};

// A value of the registry: data in hexadecimal digits, a dictionary by the order of its names.
std::string text(const ob::Object* value);

}  // namespace tavrenix::test
