#include "tests/linux/recorded_machine.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "linux/properties.hpp"
#include "model/entry.hpp"
#include "model/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

namespace fs = std::filesystem;

namespace {

std::string recording(const std::string& name) {
  return std::string(RECORDED_MACHINES) + '/' + name;
}

std::vector<std::string> linesOf(const std::string& file) {
  std::ifstream in(file);
  EXPECT_TRUE(in) << file;
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// "name: start length type rest"
std::pair<std::string, sys::Target> splitLine(const std::string& line) {
  std::istringstream words(line);
  std::string name;
  sys::Target target;
  words >> name >> target.start >> target.length >> target.type;
  words.get();
  std::getline(words, target.line);
  name.pop_back();
  return {name, target};
}

}  // namespace

void loadRecordedMaps(FakeDeviceMapper& port, const std::string& root) {
  std::map<std::string, sys::DeviceNumber> devices;
  for (const auto& line : linesOf(root + "/dmsetup.info")) {
    const auto words = sys::splitWords(line, 16);
    if (!words || words->size() < 8 || words->at(0) == "Name") continue;
    const auto device =
        sys::parseDeviceNumber(std::string(words->at(1)) + ':' + std::string(words->at(2)));
    auto& map = port.maps[device.value()];
    map.name = words->at(0);
    map.uuid = words->at(7);
    map.openCount = static_cast<std::int32_t>(sys::parseNumber(words->at(4)).value());
    devices[map.name] = *device;
  }
  for (const auto& line : linesOf(root + "/dmsetup.table")) {
    auto [name, target] = splitLine(line);
    port.maps[devices.at(name)].table = target;
  }
  for (const auto& line : linesOf(root + "/dmsetup.status")) {
    auto [name, target] = splitLine(line);
    auto& map = port.maps[devices.at(name)];
    map.otherStatus = target.line;
    const auto status = sys::parseMultipathStatus(target.line);
    for (const auto& group : status ? status->groups : std::vector<sys::StatusGroup>{}) {
      for (const auto& path : group.paths) {
        if (!path.used) map.failed.insert(path.device);
      }
    }
  }
}

RecordedMachine::RecordedMachine(const std::string& name, std::uint32_t user)
    : root(name.starts_with('/') ? name : recording(name)),
      host(sys::HostFiles(root), port, daemon, user, sys::Burst::Clock::duration::zero()) {
  loadRecordedMaps(port, root);
}

EntryID RecordedMachine::id(sys::Kind kind, sys::DeviceNumber device) const {
  struct stat found {};
  const auto name = sys::deviceEntry(kind, device);
  EXPECT_EQ(::lstat((root + sys::folderOf(name)).c_str(), &found), 0) << device.text();
  return sys::makeEntryID(name, found.st_ino);
}

ob::Ref<const ob::Dictionary> RecordedMachine::properties(EntryID entry) {
  auto properties = copyEntryProperties(registry(), entry);
  return properties ? properties : ob::DictionaryBuilder(0).build();
}

std::vector<EntryID> RecordedMachine::relatives(EntryID entry, std::uint32_t options) {
  std::vector<EntryID> found;
  forEachRelative(registry(), entry, options, [&](RegistryHandle handle) {
    found.push_back(registry().getEntryID(handle).value);
  });
  return found;
}

CopiedMachine::CopiedMachine(const std::string& name)
    : root(fs::path(testing::TempDir()) /
           ("tavrenix." + std::to_string(::getpid()) + '.' + std::to_string(std::rand()))) {
  fs::copy(recording(name), root, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

void CopiedMachine::write(const std::string& path, const std::string& content) const {
  const fs::path file = root / path.substr(1);
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

std::string textUnder(const ob::Dictionary& properties, const ob::String& name) {
  const auto* text = properties.valueAs<ob::String>(name);
  return text == nullptr ? "(none)" : std::string(text->view());
}

std::string hexUnder(const ob::Dictionary& properties, const ob::String& name) {
  const auto* data = properties.valueAs<ob::Data>(name);
  if (data == nullptr) return "(none)";
  return sys::textOfIdentifier({data->bytes().begin(), data->bytes().end()});
}

}  // namespace tavrenix::test
