// A host over a copy of a recorded machine, which a test may change.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "host/entry.hpp"
#include "linux/registry/linux_host.hpp"
#include "tests/linux/fake_ports.hpp"
#include "tests/linux/scratch.hpp"

namespace tavrenix::test {

namespace fs = std::filesystem;

class RecordedMachine {
 public:
  // The maps are those that dmsetup printed.
  explicit RecordedMachine(std::uint32_t user = 0, sys::StorageListener::Opener opener = {})
      : host(sys::HostFiles(root), port, daemon, user, std::move(opener)) {
    fs::copy(RECORDED_MACHINE, root, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    // A snapshot without the kernel's event number is valid for one look only: tests change things.
    write("/sys/kernel/uevent_seqnum", "-");
    loadMaps();
  }

  // Writes a file of the machine. A content of "/" is a folder in its place, which can be opened
  // and not read; "-" is none; "->" and a target is a new link, which has another inode number.
  void write(const std::string& path, const std::string& content) const {
    const fs::path file = root + path;
    if (content.starts_with("->")) {
      fs::create_symlink(content.substr(2), root + "/link");
      return fs::rename(root + "/link", file);
    }
    fs::create_directories(file.parent_path());
    fs::remove(file);
    if (content == "/") fs::create_directory(file);
    if (content != "/" && content != "-") std::ofstream(file, std::ios::binary) << content;
  }

  BackedRegistry& registry() { return host.registry(); }
  // Entries by the number of their device: 254:minor is a map, 8:minor a disk.
  EntryID unit(std::uint32_t minor) const { return id(sys::Kind::kUnit, {254, minor}); }
  EntryID medium(std::uint32_t minor) const { return id(sys::Kind::kMedium, {254, minor}); }
  EntryID path(std::uint32_t minor) const { return id(sys::Kind::kPath, {8, minor}); }
  FakeDeviceMapper::Map& map(std::uint32_t minor) { return port.maps.at({254, minor}); }

  std::vector<EntryID> relatives(EntryID entry, std::uint32_t options) {
    const ScopedHandle from(registry(), registry().findServiceByEntryID(entry));
    return all(registry().createIterator(from.get(), registry::kServicePlane, options));
  }
  std::vector<EntryID> all(Result<RegistryHandle> iterator) {
    EXPECT_EQ(iterator.status, kSuccess);
    std::vector<EntryID> found;
    forEachEntry(registry(), iterator.value, [&](RegistryHandle handle) {
      found.push_back(registry().getEntryID(handle).value);
    });
    return found;
  }
  // Asks the driver's tunable for a record.
  template <class Record>
  std::optional<Record> ask(std::uint32_t type, EntryID unit = 0, EntryID path = 0) {
    const SCSIMPIOStatisticsRequest request{
        .requestType = type, .logicalUnitEntryID = unit, .pathEntryID = path};
    Record record{};
    std::size_t length = sizeof record;
    const int status =
        host.tunable().sysctlbyname(kStatisticsTunable, &record, &length, &request, sizeof request);
    return status == 0 && length == sizeof record ? std::optional(record) : std::nullopt;
  }

  const Scratch scratch;
  const std::string root = scratch.folder();
  FakeDeviceMapper port;
  FakeDaemon daemon;
  sys::LinuxHost host;

 private:
  EntryID id(sys::Kind kind, sys::DeviceNumber device) const {
    struct stat found {};
    const auto name = sys::deviceEntry(kind, device);
    EXPECT_EQ(::lstat((root + sys::folderOf(name)).c_str(), &found), 0) << device.text();
    return sys::makeEntryID(name, found.st_ino);
  }

  // Reads what `dmsetup info -c`, `dmsetup table` and `dmsetup status` printed.
  void loadMaps() {
    std::map<std::string, FakeDeviceMapper::Map*> byName;
    std::ifstream info(root + "/dmsetup.info");
    std::string word;
    std::getline(info, word);  // headings
    FakeDeviceMapper::Map map;
    sys::DeviceNumber device;
    while (info >> map.name >> device.major >> device.minor >> word >> map.openCount >> word >>
           word >> map.uuid) {
      byName[map.name + ':'] = &(port.maps[device] = map);
    }
    for (const std::string lines : {"status", "table"}) {
      std::ifstream file(root + "/dmsetup." + lines);
      sys::Target target;
      while (file >> word >> target.start >> target.length >> target.type) {
        file.get();
        std::getline(file, target.line);
        if (lines == "status") byName.at(word)->status = target.line;
        byName.at(word)->table = target;
      }
    }
  }
};

}  // namespace tavrenix::test
