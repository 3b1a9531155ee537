// The contract of the device registry: tests that run on every backing.
//
// Each backing supplies a fixture. It has `BackedRegistry& registry()`, `EntryID unit()` (a logical
// unit with paths above it and a medium below it), `EntryID absent()` (an ID that no entry has),
// `void removeUnit()` and `void restoreUnit()` (which do what a driver does), `std::uint32_t
// generation()`, and `kMakesRounds`, which is true if the backing publishes in a step of its own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <set>
#include <thread>

#include "host/backed_registry.hpp"
#include "host/entry.hpp"
#include "host/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

template <class Fixture>
class RegistryContract : public testing::Test {
 protected:
  struct Note {
    EntryID id;
    std::string_view kind;
    std::uint32_t generation, afterwards;  // before and after the client has read the entry
  };

  RegistryContract() { registry().setDispatchQueue(port, *queue); }
  ~RegistryContract() override {
    registry().destroyNotificationPort(port);
    for (const RegistryHandle iterator : iterators) registry().release(iterator);
    EXPECT_EQ(registry().openHandles(), 0u);
  }
  BackedRegistry& registry() { return fixture.registry(); }
  std::vector<EntryID> read(RegistryHandle iterator) {
    std::vector<EntryID> found;
    while (const RegistryHandle next = registry().iteratorNext(iterator)) {
      const ScopedHandle entry(registry(), next);
      found.push_back(registry().getEntryID(next).value);
    }
    return found;
  }
  std::vector<EntryID> readAll(Result<RegistryHandle> made) {
    EXPECT_EQ(made.status, kSuccess);
    const ScopedHandle iterator(registry(), made.value);
    return read(made.value);
  }
  std::vector<EntryID> relatives(EntryID from, std::uint32_t options, std::string_view className) {
    std::vector<EntryID> found;
    forEachRelative(registry(), from, options, [&](RegistryHandle next) {
      if (!registry().conformsTo(next, className)) return;
      found.push_back(registry().getEntryID(next).value);
    });
    EXPECT_FALSE(found.empty());
    EXPECT_EQ(std::set<EntryID>(found.begin(), found.end()).size(), found.size());
    return found;
  }

  Result<RegistryHandle> add(RegistryPort to, std::string_view kind, NotificationDelivery deliver) {
    const auto made = registry().addMatchingNotification(
        to, kind, registry().classMatching(registry::kLogicalUnitClass), std::move(deliver));
    if (made.value != 0) iterators.push_back(made.value);
    return made;
  }
  // Registers as a client does: returns the entries that are present, and notes all later ones.
  std::vector<EntryID> watch(std::string_view kind) {
    const auto deliver = [this, kind](RegistryHandle iterator) {
      // A round that wrongly does not wait for the reader would publish in this time, and be
      // noticed.
      if (kind == registry::kTerminateNotification) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
      const std::uint32_t generation = fixture.generation();
      const auto found = read(iterator);
      const std::lock_guard lock(mutex);
      for (const EntryID id : found) noted.push_back({id, kind, generation, fixture.generation()});
      changed.notify_all();
    };
    return read(add(port, kind, deliver).value);
  }
  Note expectNote(EntryID id, std::string_view kind) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(20), [&] { return !noted.empty(); });
    EXPECT_EQ(noted.size(), 1u);
    if (noted.empty()) return {};
    EXPECT_EQ(noted[0].id, id);
    EXPECT_EQ(noted[0].kind, kind);
    return std::exchange(noted, {})[0];
  }

  Fixture fixture;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Note> noted;
  std::vector<RegistryHandle> iterators;
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("contract");
  RegistryPort port = registry().createNotificationPort();
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, FindsEntriesByClassByIDAndFromEachOther) {
  auto& registry = this->registry();
  for (const RegistryHandle bad : {RegistryHandle{0}, this->port, this->port + 1})
    EXPECT_NE(registry.copyProperties(bad).status, kSuccess);
  const EntryID unit = this->fixture.unit();
  const auto units = this->readAll(registry.findServicesByClass(registry::kLogicalUnitClass));
  EXPECT_EQ(std::count(units.begin(), units.end(), unit), 1);
  for (const EntryID id : units) {
    EXPECT_EQ(this->readAll(registry.findServicesByEntryID(id)), std::vector<EntryID>{id});
    const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
    EXPECT_TRUE(registry.conformsTo(entry.get(), registry::kServiceClass));
    EXPECT_FALSE(registry.conformsTo(entry.get(), registry::kPathClass));
  }
  EXPECT_EQ(registry.findServiceByEntryID(this->fixture.absent()), 0u);
  EXPECT_TRUE(this->readAll(registry.findServicesByEntryID(this->fixture.absent())).empty());
  EXPECT_TRUE(this->readAll(registry.findServicesByClass("NoSuchClass")).empty());
  for (const EntryID path : this->relatives(unit, kIterateParents, registry::kPathClass)) {
    const auto below = this->relatives(path, kIterateRecursively, registry::kLogicalUnitClass);
    EXPECT_EQ(std::count(below.begin(), below.end(), unit), 1);
  }
  this->relatives(unit, kIterateRecursively, registry::kMediaClass);
  const ScopedHandle entry(registry, registry.findServiceByEntryID(unit));
  const auto properties = registry.copyProperties(entry.get()).value;
  ASSERT_TRUE(properties && properties->value(registry::kUniqueIdentifier) != nullptr);
  for (const auto& [name, value] : properties->pairs()) {
    EXPECT_TRUE(registry.copyProperty(entry.get(), *name)->equals(*value)) << name->view();
  }
}

TYPED_TEST_P(RegistryContract, DeliversDeparturesBeforeTheGenerationMovesAndArrivalsAfter) {
  const EntryID unit = this->fixture.unit();
  const auto expectNote = [&](std::string_view kind) { return this->expectNote(unit, kind); };
  const auto present = this->watch(registry::kFirstMatchNotification);
  EXPECT_EQ(std::count(present.begin(), present.end(), unit), 1);
  EXPECT_TRUE(this->watch(registry::kTerminateNotification).empty());
  const std::uint32_t before = this->fixture.generation();
  {
    const ScopedHandle held(this->registry(), this->registry().findServiceByEntryID(unit));
    this->fixture.removeUnit();
    const auto departure = expectNote(registry::kTerminateNotification);
    EXPECT_TRUE(this->registry().conformsTo(held.get(), registry::kLogicalUnitClass));
    EXPECT_TRUE(!TypeParam::kMakesRounds ||
                (departure.generation == before && departure.afterwards != before));
  }
  this->fixture.restoreUnit();
  EXPECT_NE(expectNote(registry::kFirstMatchNotification).generation, before);
  this->registry().destroyNotificationPort(std::exchange(this->port, 0));
  this->fixture.removeUnit();
  this->queue->drain();
  EXPECT_TRUE(this->noted.empty()) << "the port has been destroyed";
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, FindsEntriesByClassByIDAndFromEachOther,
                            DeliversDeparturesBeforeTheGenerationMovesAndArrivalsAfter);

}  // namespace tavrenix::test
