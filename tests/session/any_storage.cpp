#include "tests/session/any_storage.hpp"

#include <limits>

#include "host/registry_names.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix::test {

namespace {

constexpr std::size_t kMostEntries = 12;
constexpr std::size_t kLongestText = 300;  // longer than any column, and than any text that is cut
constexpr std::size_t kLongestIdentifier = 127;  // that of the host's registry

const ob::String* const kNames[] = {&registry::kUniqueIdentifier,
                                    &registry::kAlias,
                                    &registry::kPeripheralDeviceType,
                                    &registry::kLoadBalancingAlgorithm,
                                    &registry::kBatchCount,
                                    &registry::kVendor,
                                    &registry::kProduct,
                                    &registry::kPathIdentifier,
                                    &registry::kPhysicalInterconnect,
                                    &registry::kProtocolCharacteristics,
                                    &registry::kSCSIPortIdentifier,
                                    &registry::kControllerCharacteristics,
                                    &registry::kLeaf,
                                    &registry::kContent,
                                    &registry::kProperties};

const char* const kClasses[] = {"KsSCSIMultipathedLogicalUnit",
                                "KsSCSIHierarchicalLogicalUnit",
                                "KsMedia",
                                "KsSCSIHost",
                                "DerivedUnit",
                                "DerivedPath"};

const std::string_view kTexts[] = {registry::kLeastBytes.view(), registry::kLeastQueueDepth.view(),
                                   registry::kModifiedRoundRobin.view(),
                                   registry::kSharedVolumeContent};

constexpr double kNumbers[] = {std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), -1.5, 1e300};

ob::Ref<const ob::Dictionary> anyDictionary(Choices& choices, int depth);

Value any(Choices& choices, int depth) {
  switch (choices.below(depth < 3 ? 10 : 8)) {
    case 0:
      return ob::Number::make(choices.oneOf(kNumbers));
    case 1:
      return ob::Number::make(choices.below(UINT64_MAX));
    case 2:
      return number(static_cast<std::int64_t>(choices.below(16)));
    case 3:
      return flag(choices.onceIn(2));
    case 4: {
      const std::string bytes = choices.bytes(kLongestIdentifier);
      return ob::Data::make(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    }
    case 5:
      return ob::Date::make(static_cast<std::int64_t>(choices.below(1000)));
    case 6:
      return ob::String::make(choices.oneOf(kTexts));
    case 7: {
      const auto made = ob::String::make(choices.bytes(kLongestText));
      return made ? Value(made) : text("not UTF-8");
    }
    case 8:
      return ob::Array::make({any(choices, depth + 1), any(choices, depth + 1)});
    default:
      return anyDictionary(choices, depth);
  }
}

ob::Ref<const ob::Dictionary> anyDictionary(Choices& choices, int depth) {
  ob::DictionaryBuilder builder(0);
  for (auto left = choices.below(7); left > 0; --left)
    builder.add(*choices.oneOf(kNames), any(choices, depth + 1));
  return builder.build();
}

}  // namespace

AnyStorage::AnyStorage(memory::MemoryHost& host, Choices& choices)
    : host_(host), choices_(choices) {
  host.registry().defineClass("DerivedUnit", std::string(registry::kLogicalUnitClass));
  host.registry().defineClass("DerivedPath", std::string(registry::kPathClass));
}

void AnyStorage::change() {
  static EntryID next = 100;
  if (entries_.empty() || (entries_.size() < kMostEntries && choices_.onceIn(2))) {
    std::vector<EntryID> parents;
    for (const EntryID entry : entries_)
      if (choices_.onceIn(2)) parents.push_back(entry);
    entries_.push_back(next++);
    host_.registry().addEntry(entries_.back(), choices_.oneOf(kClasses), parents, properties());
    return describe(entries_.back());
  }
  EntryID& id = entries_[choices_.below(entries_.size())];
  if (choices_.onceIn(2)) {
    host_.registry().replaceProperties(id, properties());
    return describe(id);
  }
  host_.registry().removeEntry(id);
  host_.tunable().forget(id);
  host_.disks().forget(id);
  std::swap(id, entries_.back());
  entries_.pop_back();
}

// Most entries are visible storage, or nothing of the rest would be looked at.
ob::Ref<const ob::Dictionary> AnyStorage::properties() {
  auto pairs = anyDictionary(choices_, 0)->pairs();
  if (choices_.onceIn(4)) return ob::Dictionary::make(std::move(pairs));
  const auto identifier = data({static_cast<std::uint8_t>(entries_.size())});
  pairs.set(ob::Ref<const ob::String>::retain(&registry::kPeripheralDeviceType), number(0));
  pairs.set(ob::Ref<const ob::String>::retain(&registry::kUniqueIdentifier), identifier);
  pairs.set(ob::Ref<const ob::String>::retain(&registry::kPathIdentifier), identifier);
  return ob::Dictionary::make(std::move(pairs));
}

void AnyStorage::describe(EntryID id) {
  const auto counter = [&] { return choices_.below(UINT64_MAX); };
  if (choices_.onceIn(2)) {
    host_.tunable().setLogicalUnitStatistics(id, {counter(), counter(), counter()});
    host_.tunable().setPathStatistics(
        id, {counter(), counter(), counter(), static_cast<std::uint8_t>(choices_.below(256))});
  }
  DiskDescription disk;
  if (choices_.onceIn(2)) disk.volumeName = ob::String::make("volume");
  if (choices_.onceIn(2)) disk.bsdName = ob::String::make(std::string(kLongestText, 'd'));
  if (choices_.onceIn(2)) disk.mediaSize = ob::Number::make(counter());
  host_.disks().set(id, std::move(disk));
}

}  // namespace tavrenix::test
