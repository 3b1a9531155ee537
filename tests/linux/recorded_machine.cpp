#include "tests/linux/recorded_machine.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "linux/properties.hpp"
#include "model/entry.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

namespace fs = std::filesystem;

namespace {

// Fills port with what `dmsetup info -c` and `dmsetup table` printed.
void loadMaps(FakeDeviceMapper& port, const fs::path& root) {
  std::map<std::string, FakeDeviceMapper::Map*> byName;
  std::ifstream info(root / "dmsetup.info");
  std::string ignored;
  std::getline(info, ignored);  // headings
  FakeDeviceMapper::Map map;
  sys::DeviceNumber device;
  while (info >> map.name >> device.major >> device.minor >> ignored >> map.openCount >> ignored >>
         ignored >> map.uuid) {
    byName[map.name + ':'] = &(port.maps[device] = map);
  }
  std::ifstream table(root / "dmsetup.table");
  std::string name;
  sys::Target target;
  while (table >> name >> target.start >> target.length >> target.type) {
    table.get();
    std::getline(table, target.line);
    byName.at(name)->table = target;
  }
}

}  // namespace

RecordedMachine::RecordedMachine(const std::string& name, Options options)
    : host(sys::HostFiles(root), port, daemon, options.user, options.pause,
           std::move(options.opener)) {
  fs::copy(fs::path(RECORDED_MACHINES) / name, root,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  loadMaps(port, root);
}

void RecordedMachine::write(const std::string& path, const std::string& content) const {
  const fs::path file(root + path);
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

EntryID RecordedMachine::id(sys::Kind kind, sys::DeviceNumber device) const {
  struct stat found {};
  const auto name = sys::deviceEntry(kind, device);
  EXPECT_EQ(::lstat((root + sys::folderOf(name)).c_str(), &found), 0) << device.text();
  return sys::makeEntryID(name, found.st_ino);
}

std::string RecordedMachine::says(EntryID entry) {
  return text(copyEntryProperties(registry(), entry).get());
}

std::vector<EntryID> RecordedMachine::relatives(EntryID entry, std::uint32_t options) {
  const ScopedHandle from(registry(), registry().findServiceByEntryID(entry));
  return all(registry().createIterator(from.get(), registry::kServicePlane, options));
}

std::vector<EntryID> RecordedMachine::ofClass(std::string_view className) {
  return all(registry().findServicesByClass(className));
}

std::vector<EntryID> RecordedMachine::all(RegistryResult<RegistryHandle> iterator) {
  EXPECT_EQ(iterator.status, kSuccess);
  std::vector<EntryID> found;
  forEachEntry(registry(), iterator.value, [&](RegistryHandle handle) {
    found.push_back(registry().getEntryID(handle).value);
  });
  return found;
}

std::string text(const ob::Object* value) {
  if (const auto* string = ob::as<ob::String>(value)) return std::string(string->view());
  if (const auto* number = ob::as<ob::Number>(value)) return std::to_string(*number->asInt64());
  if (const auto* boolean = ob::as<ob::Boolean>(value)) return boolean->value() ? "yes" : "no";
  if (const auto* data = ob::as<ob::Data>(value)) {
    return sys::textOfIdentifier({data->bytes().begin(), data->bytes().end()});
  }
  const auto* dictionary = ob::as<ob::Dictionary>(value);
  if (dictionary == nullptr) return "nothing";
  std::map<std::string, std::string> pairs;
  for (const auto& [name, one] : dictionary->pairs()) pairs[text(name.get())] = text(one.get());
  std::string all;
  for (const auto& [name, one] : pairs)
    all.append(all.empty() ? "" : ", ").append(name + ": " + one);
  return '{' + all + '}';
}

}  // namespace tavrenix::test
