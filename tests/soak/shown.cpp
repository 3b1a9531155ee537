#include "tests/soak/shown.hpp"

#include <gtest/gtest.h>

#include "lab/value_text.hpp"
#include "library/call.hpp"
#include "tests/library/owned.hpp"

namespace tavrenix::soak {

using test::at;
using test::Owned;

namespace {

Words wordsOfOwned(ObDictionaryRef handedOut) {
  return wordsOf(Owned<ObDictionaryRef>(handedOut).get());
}

Words shownPath(MPIOLogicalUnitRef unit, MPIOLogicalUnitPathRef path, RegistryHandle entry) {
  // Those of the manager, of the unit and of the array.
  EXPECT_EQ(modelOf<ob::Object>(path)->retainCount(), 3u);
  EXPECT_EQ(Owned(MPIOCopyLogicalUnitPathForService(entry)).get(), path);
  EXPECT_EQ(Owned(MPIOLogicalUnitPathCopyLogicalUnit(path)).get(), unit);
  return {wordsOfOwned(MPIOLogicalUnitPathCopyProperties(path)),
          wordsOfOwned(MPIOLogicalUnitPathCopyStatistics(path))};
}

Words shownUnit(MPIOLogicalUnitRef unit, RegistryHandle entry) {
  EXPECT_EQ(modelOf<ob::Object>(unit)->retainCount(), 2u);  // those of the manager and of the array
  EXPECT_EQ(Owned(MPIOCopyLogicalUnitForService(entry)).get(), unit);
  return {wordsOfOwned(MPIOLogicalUnitCopyProperties(unit)),
          wordsOfOwned(MPIOLogicalUnitCopyStatistics(unit))};
}

}  // namespace

Words wordsOf(const void* value) {
  const auto* object = modelOf<ob::Object>(value);
  if (const auto* text = ob::as<ob::String>(object)) return text->view();
  if (const auto* number = ob::as<ob::Number>(object)) return number->asUInt64().value();
  if (const auto* boolean = ob::as<ob::Boolean>(object)) return boolean->value();
  if (const auto* data = ob::as<ob::Data>(object)) return lab::hexFromBytes(data->bytes());
  if (ob::as<ob::Date>(object) != nullptr) return "some date";
  Words words;
  if (const auto* array = ob::as<ob::Array>(object)) {
    for (const auto& element : array->values()) words.push_back(wordsOf(element.get()));
    std::sort(words.begin(), words.end());
  } else if (const auto* dictionary = ob::as<ob::Dictionary>(object)) {
    for (const auto& [key, member] : dictionary->pairs())
      words[std::string(key->view())] = wordsOf(member.get());
  }
  return words;
}

Shown shownByLibrary(MPIODeviceRegistry& registry) {
  Shown shown;
  const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i) {
    const auto unit = at<MPIOLogicalUnitRef>(units, i);
    const EntryID unitID = modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
    const ScopedHandle unitEntry(registry, registry.findServiceByEntryID(unitID));
    std::set<EntryID> itsPaths;
    const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
    for (std::size_t j = 0; j < ObArrayGetCount(paths.get()); ++j) {
      const auto path = at<MPIOLogicalUnitPathRef>(paths, j);
      const EntryID id = modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID();
      const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
      shown[id] = shownPath(unit, path, entry.get());
      itsPaths.insert(id);
    }
    shown[unitID] = {shownUnit(unit, unitEntry.get()), itsPaths};
  }
  return shown;
}

}  // namespace tavrenix::soak
