// A machine about which the kernel, its driver, udevd and the daemon say any text. The Linux host
// must make of it values that a client can use, without control characters. A change of the map
// must be made whole or not at all.
#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include "fuzz/promise.hpp"
#include "host/entry.hpp"
#include "linux/registry/linux_host.hpp"
#include "linux/registry/selectors.hpp"
#include "tests/linux/fake_ports.hpp"
#include "tests/linux/scratch.hpp"
#include "tests/session/client_session.hpp"
#include "tests/support/value_text.hpp"

using namespace tavrenix;
using fuzz::expect;

namespace {

constexpr std::size_t kLongestText = 400;
constexpr std::size_t kLongestProperties = 2000;
constexpr sys::DeviceNumber kMap{254, 0};

const char* const kFiles[] = {
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/inquiry",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/vendor",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/model",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/type",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/state",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/access_state",
    "sys/devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sda/stat",
    "sys/devices/host4/target4:0:0/4:0:0:0/block/sdb/stat",
    "sys/devices/host4/target4:0:0/4:0:0:0/model",
    "sys/devices/virtual/block/dm-0/stat",
    "sys/devices/virtual/block/dm-0/size",
    "sys/class/scsi_host/host4/proc_name",
    "sys/class/scsi_host/host4/host_sas_address",
    "sys/class/fc_host/host3/port_name",
    "sys/class/iscsi_host/host4/initiatorname",
    "run/udev/data/b254:0",
    "proc/diskstats",
};

// The files of a machine with a multipath map over two disks. Their contents come from the input.
class Files : public test::Scratch {
 public:
  Files() {
    addDevice("8:0", "devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sda");
    addDevice("8:16", "devices/host4/target4:0:0/4:0:0:0/block/sdb");
    addDevice("254:0", "devices/virtual/block/dm-0");
    for (const char* file : kFiles)
      std::filesystem::create_directories((folder() / file).parent_path());
  }
  void write(FuzzedDataProvider& input) const {
    for (const char* name : kFiles) {
      const std::string path = folder() / name;
      const std::string content = input.ConsumeRandomLengthString(kLongestText);
      if (content == "-") {  // an attribute that is not there
        ::unlink(path.c_str());
        continue;
      }
      const ob::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600));
      const ssize_t written = ::write(file.get(), content.data(), content.size());
      expect(written == static_cast<ssize_t>(content.size()), "a scratch file can be written");
    }
  }

 private:
  void addDevice(const std::string& number, const std::string& name) const {
    namespace fs = std::filesystem;
    const fs::path whole = folder() / "sys" / name;
    for (const char* inside : {"holders", "slaves"}) fs::create_directories(whole / inside);
    // As in sysfs: "device" leads to the SCSI device above the folder "block".
    fs::create_directory_symlink("../..", whole / "device");
    fs::create_directories(folder() / "sys/dev/block");
    fs::create_directory_symlink("../../" + name, folder() / "sys/dev/block" / number);
  }
};

// Adds a map, with texts from the input, and lets some operations of the driver fail once.
test::FakeDeviceMapper::Map& addMap(test::FakeDeviceMapper& driver, FuzzedDataProvider& input) {
  auto& map = driver.maps[kMap];
  map.name = input.ConsumeRandomLengthString(128);
  map.uuid = "mpath-" + input.ConsumeRandomLengthString(129);
  map.table = {0, 16384, input.ConsumeBool() ? "multipath" : input.ConsumeRandomLengthString(16),
               input.ConsumeRandomLengthString(kLongestText)};
  map.status = input.ConsumeRandomLengthString(kLongestText);
  map.loaded = input.ConsumeRandomLengthString(kLongestText);
  if (map.loaded->empty()) map.loaded.reset();
  const auto faults = input.ConsumeIntegral<std::uint8_t>();
  constexpr const char* kFaults[] = {"load", "resume", "interrupt", "message"};
  for (std::size_t i = 0; i < std::size(kFaults); ++i)
    if ((faults >> i) % 2 != 0) driver.faults[kFaults[i]] = -EIO;
  return map;
}

void answer(test::FakeDaemon& daemon, const std::string& reply) {
  daemon.answer = [reply](const std::string& command) {
    expect(command.find_first_of(std::string_view("\n\0", 2)) == std::string::npos,
           "a command is one line");
    return sys::Answer<sys::DaemonReply>{reply.empty() ? -ENOENT : 0, sys::parseDaemonReply(reply)};
  };
}

}  // namespace

void tavrenix::fuzz::run(std::string_view bytes) {
  static const Files files;
  FuzzedDataProvider input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  test::FakeDeviceMapper driver;
  driver.tellsChanges = true;
  auto& map = addMap(driver, input);
  test::FakeDaemon daemon;
  answer(daemon, input.ConsumeRandomLengthString(64));
  files.write(input);
  const auto before = sys::parseMultipathTable(map.table.line);
  const bool isAlone = !map.loaded && driver.faults.size() <= 1;
  sys::LinuxHost host(sys::HostFiles(files.folder()), driver, daemon, 0);
  forEachEntry(host.registry(), host.registry().findServicesByClass("KsService").value,
               [&](RegistryHandle entry) {
                 const auto properties = host.registry().copyProperties(entry).value;
                 // Devices can report any bytes.
                 expect(fuzz::isShown(test::textOf(properties.get()), kLongestProperties),
                        "properties are printable");
               });
  {
    const test::UnderLibrary library(host);
    const test::Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
    test::useAll(units);
    test::runCommands(units);
  }
  expect(host.registry().openHandles() == 0, "no handle stays open");
  const auto after = sys::parseMultipathTable(map.table.line);
  // Two faults may meet so that the way back fails too.
  expect(!before || !isAlone ||
             (after && differInSelectorsAlone(*after, *before) && !map.suspended && !map.loaded),
         "a change is of the selectors alone, and whole");
}
