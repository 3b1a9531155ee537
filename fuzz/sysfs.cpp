#include "fuzz/sysfs.hpp"

#include <fcntl.h>
#include <unistd.h>

#include "fuzz/promise.hpp"

namespace tavrenix::fuzz {

namespace {

constexpr std::size_t kLongestContent = 400;

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

}  // namespace

Sysfs::Sysfs() {
  addDevice("8:0", "devices/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sda");
  addDevice("8:16", "devices/host4/target4:0:0/4:0:0:0/block/sdb");
  addDevice("254:0", "devices/virtual/block/dm-0");
  for (const char* file : kFiles)
    std::filesystem::create_directories((root() / file).parent_path());
}

void Sysfs::addDevice(const std::string& number, const std::string& folder) const {
  namespace fs = std::filesystem;
  const fs::path whole = root() / "sys" / folder;
  for (const char* inside : {"holders", "slaves"}) fs::create_directories(whole / inside);
  // As in sysfs: "device" leads to the SCSI device above the folder "block".
  fs::create_directory_symlink("../..", whole / "device");
  fs::create_directories(root() / "sys/dev/block");
  fs::create_directory_symlink("../../" + folder, root() / "sys/dev/block" / number);
}

void Sysfs::write(FuzzedDataProvider& input) const {
  for (const char* name : kFiles) {
    const std::string path = root() / name;
    const std::string content = input.ConsumeRandomLengthString(kLongestContent);
    if (content == "-") {  // an attribute that is not there
      ::unlink(path.c_str());
      continue;
    }
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const ssize_t written = ::write(file, content.data(), content.size());
    expect(written == static_cast<ssize_t>(content.size()), "a scratch file can be written");
    ::close(file);
  }
}

}  // namespace tavrenix::fuzz
