#include "host/backed_registry.hpp"

#include "host/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

namespace {

// The one key of a matching dictionary.
OB_CONSTANT_STRING(kClassName, "Class Name");

// Returns the registration that a client asks for, or null if `kind` is unknown or `matching` names
// no class.
std::shared_ptr<Registration> readRegistration(std::string_view kind,
                                               const ob::Dictionary* matching) {
  const auto* className = matching != nullptr ? matching->valueAs<ob::String>(kClassName) : nullptr;
  const bool ofArrivals = kind == registry::kFirstMatchNotification;
  if (className == nullptr || (!ofArrivals && kind != registry::kTerminateNotification)) {
    return nullptr;
  }
  auto made = std::make_shared<Registration>();
  made->ofArrivals = ofArrivals;
  made->className = className->view();
  return made;
}

}  // namespace

BackedRegistry::~BackedRegistry() {
  for (const auto& port : handles_.ports()) port->destroy();
  const ob::MutexLock lock(listening_);
  if (ports_ != 0) backing_.stopListening();
}

RegistryHandle BackedRegistry::openIterator(const Entries& entries) {
  HandleTable::Iterator iterator;
  iterator.entries.reserve(entries.size());
  for (const EntryID id : entries) iterator.entries.push_back({id, backing_.classOf(id)});
  return handles_.open(std::move(iterator));
}

std::optional<EntryID> BackedRegistry::entryIDOf(RegistryHandle entry) {
  const auto known = handles_.get<Entry>(entry);
  return known ? std::optional(known->id) : std::nullopt;
}

RegistryHandle BackedRegistry::findServiceByEntryID(EntryID entryID) {
  if (!backing_.has(entryID)) return 0;
  return handles_.open(Entry{entryID, backing_.classOf(entryID)});
}

Result<RegistryHandle> BackedRegistry::findServicesByEntryID(EntryID entryID) {
  const bool found = backing_.has(entryID);
  return {kSuccess, openIterator(found ? Entries{entryID} : Entries{})};
}

Result<RegistryHandle> BackedRegistry::findServicesByClass(std::string_view className) {
  const auto found = backing_.entriesOfClass(className);
  if (found.status != kSuccess) return {found.status, 0};
  return {kSuccess, openIterator(found.value)};
}

Result<ob::Ref<const ob::Dictionary>> BackedRegistry::copyProperties(RegistryHandle entry) {
  const auto id = entryIDOf(entry);
  if (!id) return {kBadHandle, nullptr};
  auto properties = backing_.properties(*id);
  const KernelStatus status = properties ? kSuccess : kEntryGone;
  return {status, std::move(properties)};
}

ob::Ref<const ob::Object> BackedRegistry::copyProperty(RegistryHandle entry,
                                                       const ob::String& name) {
  const auto id = entryIDOf(entry);
  return id ? backing_.property(*id, name) : nullptr;
}

ob::Ref<const ob::Object> BackedRegistry::searchProperty(RegistryHandle entry,
                                                         std::string_view plane,
                                                         const ob::String& name,
                                                         std::uint32_t options) {
  const auto id = entryIDOf(entry);
  if (!id || plane != registry::kServicePlane) return nullptr;
  if (auto own = backing_.property(*id, name)) return own;
  for (const EntryID relative : backing_.relatives(*id, options).value) {
    if (auto value = backing_.property(relative, name)) return value;
  }
  return nullptr;
}

KernelStatus BackedRegistry::setProperty(RegistryHandle entry, const ob::String& name,
                                         const ob::Object& value) {
  const auto id = entryIDOf(entry);
  return id ? backing_.carryOut(*id, name, value) : kBadHandle;
}

Result<RegistryHandle> BackedRegistry::createIterator(RegistryHandle entry, std::string_view plane,
                                                      std::uint32_t options) {
  const auto id = entryIDOf(entry);
  if (!id || plane != registry::kServicePlane) return {kBadHandle, 0};
  const auto found = backing_.relatives(*id, options);
  if (found.status != kSuccess) return {found.status, 0};
  return {kSuccess, openIterator(found.value)};
}

RegistryHandle BackedRegistry::iteratorNext(RegistryHandle iterator) {
  const auto registration = handles_.get<HandleTable::SharedRegistration>(iterator);
  if (!registration) return handles_.next(iterator);
  const auto entry = announcements_.next(**registration);
  return entry ? handles_.open(*entry) : 0;
}

bool BackedRegistry::conformsTo(RegistryHandle entry, std::string_view className) {
  const auto known = handles_.get<Entry>(entry);
  return known && backing_.isKindOf(known->className, className);
}

Result<EntryID> BackedRegistry::getEntryID(RegistryHandle entry) {
  const auto id = entryIDOf(entry);
  return id ? Result<EntryID>{kSuccess, *id} : Result<EntryID>{kBadHandle, 0};
}

void BackedRegistry::release(RegistryHandle handle) {
  if (handle == 0) return;
  const HandleTable::Slot released = handles_.release(handle);
  if (const auto* registration = std::get_if<HandleTable::SharedRegistration>(&released)) {
    announcements_.remove(**registration);
  }
}

ob::Ref<NotificationPort> BackedRegistry::portOf(RegistryPort port) {
  return handles_.get<HandleTable::Port>(port).value_or(nullptr);
}

RegistryPort BackedRegistry::createNotificationPort() {
  ScopedHandle port(*this, handles_.open(ob::make<NotificationPort>()));
  const ob::MutexLock lock(listening_);
  if (ports_ == 0 && !backing_.startListening(announcements_)) return 0;
  ++ports_;
  return port.detach();
}

void BackedRegistry::setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) {
  if (const auto known = portOf(port)) known->setDispatchQueue(queue);
}

ob::Ref<ob::RunLoopSource> BackedRegistry::getRunLoopSource(RegistryPort port) {
  const auto known = portOf(port);
  return known ? known->runLoopSource() : nullptr;
}

void BackedRegistry::destroyNotificationPort(RegistryPort port) {
  const auto known = portOf(port);
  if (!known) return;
  known->destroy();
  handles_.release(port);
  announcements_.noticeDestroyedPort();
  const ob::MutexLock lock(listening_);
  if (--ports_ != 0) return;
  backing_.stopListening();
  announcements_.forgetEntries();
}

ob::Ref<const ob::Dictionary> BackedRegistry::classMatching(std::string_view className) {
  ob::DictionaryBuilder matching(1);
  matching.add(kClassName, ob::String::make(className));
  return matching.build();
}

Result<RegistryHandle> BackedRegistry::addMatchingNotification(
    RegistryPort port, std::string_view kind, ob::Ref<const ob::Dictionary> matching,
    NotificationDelivery deliver) {
  const auto made = readRegistration(kind, matching.get());
  auto known = portOf(port);
  if (!made || !known) return {kBadHandle, 0};
  made->port = std::move(known);
  made->deliver = std::move(deliver);
  ScopedHandle iterator(*this, handles_.open(made));
  made->iterator = iterator.get();
  const KernelStatus status = announcements_.add(made);
  if (status != kSuccess) return {status, 0};
  return {kSuccess, iterator.detach()};
}

}  // namespace tavrenix
