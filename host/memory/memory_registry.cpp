#include "host/memory/memory_registry.hpp"

#include "host/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::memory {

using Lock = ob::MutexLock;

namespace {

Entries idsOf(const std::vector<const Node*>& nodes) {
  Entries ids;
  ids.reserve(nodes.size());
  for (const Node* node : nodes) ids.push_back(node->id);
  return ids;
}

}  // namespace

bool MemoryRegistry::defineClass(const std::string& className, const std::string& base) {
  const Lock lock(mutex_);
  return tree_.defineClass(className, base);
}

std::string_view MemoryRegistry::classNamed(const std::string& name) {
  const Lock lock(mutex_);
  return tree_.classNamed(name).name;
}

bool MemoryRegistry::addEntry(EntryID id, const std::string& className,
                              const std::vector<EntryID>& parents,
                              ob::Ref<const ob::Dictionary> properties) {
  Change change{{id, {}}, true};
  {
    const Lock lock(mutex_);
    const Node* added = tree_.add(id, className, parents, std::move(properties));
    if (added == nullptr) return false;
    change.entry.className = added->itsClass->name;
  }
  announce(change);
  return true;
}

bool MemoryRegistry::removeEntry(EntryID id) {
  const Change change{{id, classOf(id)}, false};
  {
    const Lock lock(mutex_);
    if (!tree_.remove(id)) return false;
  }
  announce(change);
  return true;
}

bool MemoryRegistry::replaceParents(EntryID id, const std::vector<EntryID>& parents) {
  const Lock lock(mutex_);
  Node* node = tree_.find(id);
  return node != nullptr && tree_.setParents(*node, parents);
}

bool MemoryRegistry::replaceProperties(EntryID id, ob::Ref<const ob::Dictionary> properties) {
  const Lock lock(mutex_);
  Node* node = tree_.find(id);
  if (node != nullptr) node->properties = std::move(properties);
  return node != nullptr;
}

void MemoryRegistry::setWriteHandler(WriteHandler handler) {
  const Lock lock(mutex_);
  writeHandler_ = std::move(handler);
}

bool MemoryRegistry::has(EntryID entry) {
  const Lock lock(mutex_);
  return tree_.find(entry) != nullptr;
}

Result<Entries> MemoryRegistry::entriesOfClass(std::string_view className) {
  const Lock lock(mutex_);
  return {kSuccess, idsOf(tree_.ofClass(className))};
}

Result<Entries> MemoryRegistry::relatives(EntryID entry, std::uint32_t options) {
  const Lock lock(mutex_);
  Node* node = tree_.find(entry);
  if (node == nullptr) return {kNoSuchObject, {}};
  return {kSuccess, idsOf(tree_.relatives(*node, options))};
}

std::string_view MemoryRegistry::classOf(EntryID entry) {
  const Lock lock(mutex_);
  const Node* node = tree_.find(entry);
  return node == nullptr ? std::string_view() : node->itsClass->name;
}

bool MemoryRegistry::isKindOf(std::string_view className, std::string_view base) {
  const Lock lock(mutex_);
  const RegistryClass* known = tree_.findClass(className);
  return known != nullptr && known->derivesFrom(base);
}

ob::Ref<const ob::Dictionary> MemoryRegistry::properties(EntryID entry) {
  const Lock lock(mutex_);
  const Node* node = tree_.find(entry);
  return node == nullptr ? nullptr : node->properties;
}

ob::Ref<const ob::Object> MemoryRegistry::property(EntryID entry, const ob::String& name) {
  const auto all = properties(entry);
  return all ? ob::Ref<const ob::Object>::retain(all->value(name)) : nullptr;
}

KernelStatus MemoryRegistry::carryOut(EntryID entry, const ob::String& name,
                                      const ob::Object& value) {
  WriteHandler handler;
  {
    const Lock lock(mutex_);
    Node* node = tree_.find(entry);
    if (node == nullptr) return kNoSuchObject;
    if (!writeHandler_) {
      auto pairs = node->properties->pairs();
      pairs.set(ob::Ref<const ob::String>::retain(&name),
                ob::Ref<const ob::Object>::retain(&value));
      node->properties = ob::Dictionary::make(std::move(pairs));
      return kSuccess;
    }
    handler = writeHandler_;
  }
  return handler(entry, name, value);
}

bool MemoryRegistry::startListening(Announcements& announcements) {
  const Lock lock(mutex_);
  listener_ = &announcements;
  return true;
}

void MemoryRegistry::stopListening() {
  const Lock lock(mutex_);
  listener_ = nullptr;
}

Result<std::vector<Entry>> MemoryRegistry::present() {
  const Lock lock(mutex_);
  std::vector<Entry> entries;
  for (const Node* node : tree_.ofClass(registry::kServiceClass)) {
    entries.push_back({node->id, node->itsClass->name});
  }
  return {kSuccess, std::move(entries)};
}

void MemoryRegistry::announce(const Change& change) {
  Announcements* listener = nullptr;
  {
    const Lock lock(mutex_);
    if (holds_ != 0) held_.push_back(change);
    if (holds_ == 0) listener = listener_;
  }
  if (listener == nullptr) return;
  change.arrival ? listener->arrived(change.entry) : listener->departed(change.entry);
}

MemoryRegistry::HeldNotifications::HeldNotifications(MemoryRegistry& registry)
    : registry_(registry) {
  const Lock lock(registry_.mutex_);
  ++registry_.holds_;
}

MemoryRegistry::HeldNotifications::~HeldNotifications() {
  std::vector<Change> held;
  {
    const Lock lock(registry_.mutex_);
    if (--registry_.holds_ == 0) held.swap(registry_.held_);
  }
  for (const Change& change : held) registry_.announce(change);
}

}  // namespace tavrenix::memory
