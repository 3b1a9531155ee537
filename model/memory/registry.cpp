#include "model/memory/registry.hpp"

#include "model/registry_names.hpp"

namespace tavrenix::memory {

using Lock = std::lock_guard<std::mutex>;

Entry* MemoryRegistry::entryOf(RegistryHandle handle) const {
  const auto* entry = handles_.opened<ob::Ref<Entry>>(handle);
  return entry == nullptr ? nullptr : entry->get();
}

bool MemoryRegistry::defineClass(const std::string& className, const std::string& base) {
  const Lock lock(mutex_);
  return tree_.defineClass(className, base);
}

bool MemoryRegistry::addEntry(EntryID id, const std::string& className,
                              const std::vector<EntryID>& parents,
                              ob::Ref<const ob::Dictionary> properties) {
  const Lock lock(mutex_);
  Entry* added = tree_.add(id, className, parents, std::move(properties));
  if (added != nullptr) registrations_.changed(ob::Ref<Entry>::retain(added), true);
  return added != nullptr;
}

bool MemoryRegistry::removeEntry(EntryID id) {
  const Lock lock(mutex_);
  const auto removed = tree_.remove(id);
  if (removed) registrations_.changed(removed, false);
  return static_cast<bool>(removed);
}

ob::Ref<const ob::Dictionary> MemoryRegistry::properties(EntryID id) const {
  const Lock lock(mutex_);
  const Entry* entry = tree_.find(id);
  return entry == nullptr ? nullptr : entry->properties;
}

bool MemoryRegistry::replaceProperties(EntryID id, ob::Ref<const ob::Dictionary> properties) {
  const Lock lock(mutex_);
  Entry* entry = tree_.find(id);
  if (entry != nullptr) entry->properties = std::move(properties);
  return entry != nullptr;
}

bool MemoryRegistry::replaceParents(EntryID id, const std::vector<EntryID>& parents) {
  const Lock lock(mutex_);
  Entry* entry = tree_.find(id);
  return entry != nullptr && tree_.setParents(*entry, parents);
}

void MemoryRegistry::setWriteHandler(WriteHandler handler) {
  const Lock lock(mutex_);
  writeHandler_ = std::move(handler);
}

std::size_t MemoryRegistry::openHandles() const {
  const Lock lock(mutex_);
  return handles_.size();
}

std::optional<EntryID> MemoryRegistry::entryIDOf(RegistryHandle entry) const {
  const Lock lock(mutex_);
  const Entry* known = entryOf(entry);
  return known == nullptr ? std::nullopt : std::optional(known->id);
}

RegistryHandle MemoryRegistry::findServiceByEntryID(EntryID entryID) {
  const Lock lock(mutex_);
  Entry* entry = tree_.find(entryID);
  return entry == nullptr ? 0 : handles_.open(ob::Ref<Entry>::retain(entry));
}

RegistryResult<RegistryHandle> MemoryRegistry::findServicesByEntryID(EntryID entryID) {
  const Lock lock(mutex_);
  Iterator found;
  if (Entry* entry = tree_.find(entryID)) found.entries.push_back(ob::Ref<Entry>::retain(entry));
  return {kSuccess, handles_.open(std::move(found))};
}

RegistryResult<RegistryHandle> MemoryRegistry::findServicesByClass(std::string_view className) {
  const Lock lock(mutex_);
  return {kSuccess, handles_.open(Iterator{tree_.ofClass(className)})};
}

RegistryResult<ob::Ref<const ob::Dictionary>> MemoryRegistry::copyProperties(RegistryHandle entry) {
  const Lock lock(mutex_);
  const Entry* known = entryOf(entry);
  if (known == nullptr) return {kNoSuchObject, nullptr};
  return {kSuccess, known->properties};
}

ob::Ref<const ob::Object> MemoryRegistry::copyProperty(RegistryHandle entry,
                                                       const ob::String& name) {
  const Lock lock(mutex_);
  const Entry* known = entryOf(entry);
  if (known == nullptr) return nullptr;
  return ob::Ref<const ob::Object>::retain(known->properties->value(name));
}

ob::Ref<const ob::Object> MemoryRegistry::searchProperty(RegistryHandle entry,
                                                         std::string_view plane,
                                                         const ob::String& name,
                                                         std::uint32_t options) {
  const Lock lock(mutex_);
  Entry* known = entryOf(entry);
  if (known == nullptr || plane != registry::kServicePlane) return nullptr;
  if (const ob::Object* own = known->properties->value(name)) {
    return ob::Ref<const ob::Object>::retain(own);
  }
  for (const auto& relative : tree_.relatives(*known, options)) {
    if (const ob::Object* value = relative->properties->value(name)) {
      return ob::Ref<const ob::Object>::retain(value);
    }
  }
  return nullptr;
}

KernelStatus MemoryRegistry::setProperty(RegistryHandle entry, const ob::String& name,
                                         const ob::Object& value) {
  WriteHandler handler;
  EntryID id = 0;
  {
    const Lock lock(mutex_);
    Entry* known = entryOf(entry);
    if (known == nullptr || !known->isInTree) return kNoSuchObject;
    if (!writeHandler_) {
      auto pairs = known->properties->pairs();
      pairs.set(ob::Ref<const ob::String>::retain(&name),
                ob::Ref<const ob::Object>::retain(&value));
      known->properties = ob::Dictionary::make(std::move(pairs));
      return kSuccess;
    }
    handler = writeHandler_;
    id = known->id;
  }
  return handler(id, name, value);
}

RegistryResult<RegistryHandle> MemoryRegistry::createIterator(RegistryHandle entry,
                                                              std::string_view plane,
                                                              std::uint32_t options) {
  const Lock lock(mutex_);
  Entry* known = entryOf(entry);
  if (known == nullptr || plane != registry::kServicePlane) return {kNoSuchObject, 0};
  return {kSuccess, handles_.open(Iterator{tree_.relatives(*known, options)})};
}

RegistryHandle MemoryRegistry::iteratorNext(RegistryHandle iterator) {
  const Lock lock(mutex_);
  const auto* registration = handles_.opened<AllHandles::SharedRegistration>(iterator);
  if (registration == nullptr) return handles_.next(iterator);
  auto entry = (*registration)->next();
  return entry ? handles_.open(std::move(*entry)) : 0;
}

bool MemoryRegistry::conformsTo(RegistryHandle entry, std::string_view className) {
  const Lock lock(mutex_);
  const Entry* known = entryOf(entry);
  return known != nullptr && known->itsClass.conformsTo(className);
}

RegistryResult<EntryID> MemoryRegistry::getEntryID(RegistryHandle entry) {
  const Lock lock(mutex_);
  Entry* known = entryOf(entry);
  if (known == nullptr) return {kNoSuchObject, 0};
  tree_.expect(*known);  // who asks for an ID mostly looks the entry up by it
  return {kSuccess, known->id};
}

void MemoryRegistry::release(RegistryHandle handle) {
  AllHandles::Slot released;  // destroyed after the lock
  const Lock lock(mutex_);
  released = handles_.release(handle);
  if (const auto* registration = std::get_if<AllHandles::SharedRegistration>(&released)) {
    registrations_.remove(**registration);
  }
}

}  // namespace tavrenix::memory
