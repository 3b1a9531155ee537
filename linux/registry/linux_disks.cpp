#include "linux/registry/linux_disks.hpp"

#include "runtime/byte_text.hpp"

namespace tavrenix::sys {

std::optional<DiskDescription> LinuxDisks::describe(RegistryHandle media) {
  const auto id = registry_.entryIDOf(media);
  if (!id || keyOf(*id).kind != Kind::kMedium || !machine_.exists(*id)) return std::nullopt;
  DiskDescription description;
  const auto label = machine_.label(*id);
  if (!label) return description;

  description.volumeName = ob::String::make(*label);
  description.bsdName = ob::String::make(deviceName(*id));
  const auto size = machine_.files().read(folderOf(keyOf(*id)) + "/size");
  if (const auto sectors = size ? parseNumber(trim(size.text)) : std::nullopt) {
    description.mediaSize = ob::Number::make(*sectors * 512);
  }
  return description;
}

// Returns the name of a map, or the kernel's name of any other device.
std::string LinuxDisks::deviceName(EntryID medium) {
  if (const auto map = machine_.unit(withKind(medium, Kind::kUnit))) {
    return ob::printable(map->lines.name);
  }
  const auto link = machine_.files().link(folderOf(keyOf(medium)));
  const auto place = link ? parsePlace(*link) : std::nullopt;
  return place ? place->name : std::string();
}

}  // namespace tavrenix::sys
