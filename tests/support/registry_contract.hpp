// What every backing of the registry seam must do: one list of tests, run over each backing.
//
// A backing gives a fixture with: `MPIODeviceRegistry& registry()`, `EntryID unit()` (a logical
// unit with at least one path above it and one medium below it), `EntryID absent()` (an ID that no
// entry has) and `std::size_t openHandles()`. Register with INSTANTIATE_TYPED_TEST_SUITE_P(Name,
// RegistryContract, Fixture).
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "model/entry.hpp"
#include "model/registry.hpp"
#include "model/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

template <class Backing>
class RegistryContract : public testing::Test {
 protected:
  ~RegistryContract() override { EXPECT_EQ(backing.openHandles(), 0u); }

  MPIODeviceRegistry& registry() { return backing.registry(); }
  std::vector<EntryID> drain(RegistryHandle iterator,
                             std::string_view className = registry::kServiceClass) {
    std::vector<EntryID> found;
    forEachEntry(registry(), iterator, [&](RegistryHandle entry) {
      if (registry().conformsTo(entry, className))
        found.push_back(registry().getEntryID(entry).value);
    });
    return found;
  }
  std::vector<EntryID> relatives(EntryID from, std::uint32_t options, std::string_view className) {
    const ScopedHandle entry(registry(), registry().findServiceByEntryID(from));
    const auto [status, iterator] =
        registry().createIterator(entry.get(), registry::kServicePlane, options);
    EXPECT_EQ(status, kSuccess);
    return drain(iterator, className);
  }

  Backing backing;
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, FindsByClassWhatItFindsByID) {
  auto& registry = this->registry();
  const EntryID unit = this->backing.unit();
  const ScopedHandle entry(registry, registry.findServiceByEntryID(unit));
  ASSERT_TRUE(entry);
  EXPECT_EQ(registry.getEntryID(entry.get()).value, unit);
  EXPECT_TRUE(registry.conformsTo(entry.get(), registry::kLogicalUnitClass));
  EXPECT_TRUE(registry.conformsTo(entry.get(), registry::kServiceClass));
  EXPECT_FALSE(registry.conformsTo(entry.get(), registry::kPathClass));
  const auto all = this->drain(registry.findServicesByClass(registry::kLogicalUnitClass).value);
  EXPECT_EQ(std::count(all.begin(), all.end(), unit), 1);
  for (const EntryID id : all) {
    EXPECT_EQ(this->drain(registry.findServicesByEntryID(id).value), std::vector<EntryID>{id});
  }
}

TYPED_TEST_P(RegistryContract, FindsNothingUnderAnAbsentIDOrClass) {
  auto& registry = this->registry();
  EXPECT_EQ(registry.findServiceByEntryID(this->backing.absent()), 0u);
  EXPECT_EQ(registry.findServiceByEntryID(0), 0u);
  const auto [status, iterator] = registry.findServicesByEntryID(this->backing.absent());
  EXPECT_EQ(status, kSuccess);
  EXPECT_TRUE(this->drain(iterator).empty());
  EXPECT_TRUE(this->drain(registry.findServicesByClass("NoSuchClass").value).empty());
}

TYPED_TEST_P(RegistryContract, WalksToEachRelativeOnceAndBack) {
  const auto isSet = [](const std::vector<EntryID>& ids) {
    return !ids.empty() && std::set<EntryID>(ids.begin(), ids.end()).size() == ids.size();
  };
  const EntryID unit = this->backing.unit();
  const auto paths = this->relatives(unit, kIterateParents, registry::kPathClass);
  EXPECT_TRUE(isSet(paths));
  for (const EntryID path : paths) {
    const auto units = this->relatives(path, kIterateRecursively, registry::kLogicalUnitClass);
    EXPECT_EQ(std::count(units.begin(), units.end(), unit), 1);
  }
  EXPECT_TRUE(isSet(this->relatives(unit, kIterateRecursively, registry::kMediaClass)));
}

TYPED_TEST_P(RegistryContract, ReadsOnePropertyAsItReadsAll) {
  auto& registry = this->registry();
  const ScopedHandle entry(registry, registry.findServiceByEntryID(this->backing.unit()));
  const auto [status, properties] = registry.copyProperties(entry.get());
  ASSERT_EQ(status, kSuccess);
  ASSERT_FALSE(properties->pairs().empty());
  for (const auto& [name, value] : properties->pairs()) {
    const auto single = registry.copyProperty(entry.get(), *name);
    ASSERT_TRUE(single) << name->view();
    EXPECT_TRUE(single->equals(*value)) << name->view();
  }
  EXPECT_FALSE(registry.copyProperty(entry.get(), *ob::String::make("No Such Property")));
  EXPECT_NE(properties->template valueAs<ob::Data>(registry::kUniqueIdentifier), nullptr);
  EXPECT_NE(properties->template valueAs<ob::Number>(registry::kPeripheralDeviceType), nullptr);
}

TYPED_TEST_P(RegistryContract, SearchesUpTheAncestors) {
  auto& registry = this->registry();
  const auto paths = this->relatives(this->backing.unit(), kIterateParents, registry::kPathClass);
  const ScopedHandle path(registry, registry.findServiceByEntryID(paths.at(0)));
  const auto search = [&](const ob::String& name) {
    return registry.searchProperty(path.get(), registry::kServicePlane, name,
                                   kIterateRecursively | kIterateParents);
  };
  EXPECT_NE(ob::as<ob::Data>(search(registry::kPathIdentifier).get()),
            nullptr);  // on the entry itself
  EXPECT_NE(ob::as<ob::Dictionary>(search(registry::kControllerCharacteristics).get()), nullptr);
  EXPECT_FALSE(search(*ob::String::make("No Such Property")));
}

TYPED_TEST_P(RegistryContract, RefusesWhatIsNoHandle) {
  auto& registry = this->registry();
  registry.release(0);
  EXPECT_NE(registry.copyProperties(0).status, kSuccess);
  EXPECT_FALSE(registry.copyProperty(0, registry::kAlias));
  EXPECT_NE(registry.getEntryID(0).status, kSuccess);
  EXPECT_FALSE(registry.conformsTo(0, registry::kServiceClass));
  EXPECT_NE(registry.createIterator(0, registry::kServicePlane, 0).status, kSuccess);
  EXPECT_EQ(registry.iteratorNext(0), 0u);
  EXPECT_NE(registry.setProperty(0, registry::kProperties, registry::kAlias), kSuccess);
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, FindsByClassWhatItFindsByID,
                            FindsNothingUnderAnAbsentIDOrClass, WalksToEachRelativeOnceAndBack,
                            ReadsOnePropertyAsItReadsAll, SearchesUpTheAncestors,
                            RefusesWhatIsNoHandle);

}  // namespace tavrenix::test
