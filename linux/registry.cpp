#include "linux/registry.hpp"

#include <cerrno>

#include "linux/properties.hpp"
#include "linux/tree.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::sys {

RegistryHandle LinuxRegistry::findServiceByEntryID(EntryID entryID) {
  return machine_.exists(entryID) ? handles_.open(entryID) : 0;
}

RegistryResult<RegistryHandle> LinuxRegistry::findServicesByEntryID(EntryID entryID) {
  Entries found;
  if (machine_.exists(entryID)) found.push_back(entryID);
  return {kSuccess, handles_.open(Iterator{std::move(found)})};
}

RegistryResult<RegistryHandle> LinuxRegistry::findServicesByClass(std::string_view className) {
  auto found = entriesOfClass(machine_, className);
  if (found.status != 0) return {found.status, 0};
  return {kSuccess, handles_.open(Iterator{std::move(found.value)})};
}

RegistryResult<ob::Ref<const ob::Dictionary>> LinuxRegistry::copyProperties(RegistryHandle entry) {
  const auto id = entryIDOf(entry);
  auto properties = id ? propertiesOf(machine_, *id) : nullptr;
  if (!properties) return {-ENXIO, nullptr};
  return {kSuccess, std::move(properties)};
}

ob::Ref<const ob::Object> LinuxRegistry::copyProperty(RegistryHandle entry,
                                                      const ob::String& name) {
  const auto id = entryIDOf(entry);
  return id ? propertyOf(machine_, *id, name) : nullptr;
}

ob::Ref<const ob::Object> LinuxRegistry::searchProperty(RegistryHandle entry,
                                                        std::string_view plane,
                                                        const ob::String& name,
                                                        std::uint32_t options) {
  const auto id = entryIDOf(entry);
  if (!id || plane != registry::kServicePlane) return nullptr;
  if (auto own = propertyOf(machine_, *id, name)) return own;
  for (const EntryID relative : relativesOf(machine_, *id, options)) {
    if (auto value = propertyOf(machine_, relative, name)) return value;
  }
  return nullptr;
}

KernelStatus LinuxRegistry::setProperty(RegistryHandle entry, const ob::String& name,
                                        const ob::Object& value) {
  const auto id = entryIDOf(entry);
  if (!id || !machine_.exists(*id)) return -ENXIO;
  const auto* request = ob::as<ob::Dictionary>(&value);
  if (nameOf(*id).kind != Kind::kUnit || !name.equals(registry::kProperties)) return -EOPNOTSUPP;
  return request == nullptr ? -EINVAL : requests_.carryOut(*id, *request);
}

RegistryResult<RegistryHandle> LinuxRegistry::createIterator(RegistryHandle entry,
                                                             std::string_view plane,
                                                             std::uint32_t options) {
  const auto id = entryIDOf(entry);
  if (!id || plane != registry::kServicePlane || !machine_.exists(*id)) return {-ENXIO, 0};
  return {kSuccess, handles_.open(Iterator{relativesOf(machine_, *id, options)})};
}

bool LinuxRegistry::conformsTo(RegistryHandle entry, std::string_view className) {
  const auto id = entryIDOf(entry);
  return id && sys::conformsTo(nameOf(*id).kind, className);
}

RegistryResult<EntryID> LinuxRegistry::getEntryID(RegistryHandle entry) {
  const auto id = entryIDOf(entry);
  if (!id) return {-EBADF, 0};
  return {kSuccess, *id};
}

}  // namespace tavrenix::sys
