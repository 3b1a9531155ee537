#include "fuzz/any_storage.hpp"

#include <limits>

#include "model/registry_names.hpp"

namespace tavrenix::fuzz {

namespace {

using Value = ob::Ref<const ob::Object>;

constexpr std::size_t kMostEntries = 12;
constexpr int kDeepestNesting = 4;  // of containers with several elements
constexpr std::size_t kMostElements = 6;
constexpr std::size_t kLongestText = 300;  // longer than any column and any text that is cut
constexpr std::size_t kHuge = 70000;       // in one piece, so that it costs no input
constexpr std::size_t kDeep = 100;
// One byte more in an identifier stops the process with a message, on purpose: see
// identifierText(). That is not a finding.
constexpr std::size_t kLongestIdentifier = 127;

const ob::String* const kNames[] = {&registry::kUniqueIdentifier,
                                    &registry::kAlias,
                                    &registry::kLoadBalancingAlgorithm,
                                    &registry::kPeripheralDeviceType,
                                    &registry::kBatchCount,
                                    &registry::kVendor,
                                    &registry::kProduct,
                                    &registry::kPathIdentifier,
                                    &registry::kProtocolCharacteristics,
                                    &registry::kPhysicalInterconnect,
                                    &registry::kControllerCharacteristics,
                                    &registry::kSCSIPortIdentifier,
                                    &registry::kLeaf,
                                    &registry::kContent,
                                    &registry::kProperties};

const char* const kClasses[] = {"KsSCSIMultipathedLogicalUnit",
                                "KsSCSIHierarchicalLogicalUnit",
                                "KsMedia",
                                "KsSCSIHost",
                                "DerivedUnit",
                                "DerivedPath"};

// Texts with a meaning, and others.
Value text(FuzzedDataProvider& input) {
  const std::string_view known[] = {registry::kLeastBytes.view(), registry::kLeastQueueDepth.view(),
                                    registry::kModifiedRoundRobin.view(),
                                    registry::kSharedVolumeContent,
                                    registry::kSharedVolumeComponentContent};
  const auto kind = input.ConsumeIntegralInRange<std::size_t>(0, std::size(known) + 1);
  if (kind < std::size(known)) return ob::String::make(known[kind]);
  if (kind == std::size(known)) {
    const auto length = input.ConsumeIntegralInRange<std::size_t>(0, kHuge);
    return ob::String::make(std::string(length, '\x1b'));
  }
  const auto string = ob::String::make(input.ConsumeRandomLengthString(kLongestText));
  return string ? Value(string) : ob::String::make("not UTF-8");
}

Value number(FuzzedDataProvider& input) {
  using Limits = std::numeric_limits<double>;
  switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0:
      return ob::Number::make(input.ConsumeIntegral<std::int64_t>());
    case 1:
      return ob::Number::make(input.ConsumeIntegral<std::uint64_t>());
    case 2:
      return ob::Number::make(input.ConsumeFloatingPoint<double>());
    case 3:
      return ob::Number::make(Limits::quiet_NaN());
    case 4:
      return ob::Number::make(Limits::infinity());
    default:
      return ob::Number::make(input.ConsumeIntegralInRange<std::int64_t>(0, 16));
  }
}

Value data(FuzzedDataProvider& input, const ob::String* name) {
  const bool isIdentifier =
      name == &registry::kUniqueIdentifier || name == &registry::kPathIdentifier;
  if (!isIdentifier && input.ConsumeBool()) {
    return ob::Data::make(
        std::vector<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, kHuge)));
  }
  const auto size = input.ConsumeIntegralInRange<std::size_t>(0, kLongestIdentifier);
  return ob::Data::make(input.ConsumeBytes<std::uint8_t>(size));
}

// Arrays in one another.
Value nested(FuzzedDataProvider& input) {
  Value value = number(input);
  for (auto depth = input.ConsumeIntegralInRange<std::size_t>(1, kDeep); depth > 0; --depth)
    value = ob::Array::make({value});
  return value;
}

// name: under which it will stand; null within an array.
Value any(FuzzedDataProvider& input, int depth, const ob::String* name);

ob::Ref<const ob::Dictionary> dictionary(FuzzedDataProvider& input, int depth) {
  ob::DictionaryBuilder builder(0);
  for (auto count = input.ConsumeIntegralInRange<std::size_t>(0, kMostElements); count > 0;
       --count) {
    const ob::String* name = input.PickValueInArray(kNames);
    builder.add(*name, any(input, depth + 1, name));
  }
  return builder.build();
}

Value array(FuzzedDataProvider& input, int depth) {
  ob::Array::Values values;
  for (auto count = input.ConsumeIntegralInRange<std::size_t>(0, kMostElements); count > 0; --count)
    values.push_back(any(input, depth + 1, nullptr));
  return ob::Array::make(std::move(values));
}

Value any(FuzzedDataProvider& input, int depth, const ob::String* name) {
  const int deepest = depth < kDeepestNesting ? 7 : 5;
  switch (input.ConsumeIntegralInRange(0, deepest)) {
    case 0:
      return text(input);
    case 1:
      return number(input);
    case 2:
      return data(input, name);
    case 3:
      return ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(input.ConsumeBool()));
    case 4:
      return ob::Date::make(input.ConsumeIntegral<std::int64_t>());
    case 5:
      return nested(input);
    case 6:
      return array(input, depth);
    default:
      return dictionary(input, depth);
  }
}

}  // namespace

// Most entries are storage that is visible, or nothing of the rest would be looked at.
ob::Ref<const ob::Dictionary> AnyStorage::properties() {
  auto pairs = dictionary(input_, 0)->pairs();
  if (!input_.ConsumeBool()) return ob::Dictionary::make(std::move(pairs));
  pairs.set(ob::Ref<const ob::String>::retain(&registry::kPeripheralDeviceType),
            ob::Number::make(std::int64_t{0}));
  const std::uint8_t identifier[] = {static_cast<std::uint8_t>(entries_.size())};
  for (const auto* name : {&registry::kUniqueIdentifier, &registry::kPathIdentifier}) {
    pairs.set(ob::Ref<const ob::String>::retain(name), ob::Data::make(identifier));
  }
  return ob::Dictionary::make(std::move(pairs));
}

void AnyStorage::describe(EntryID id) {
  const auto counter = [&] { return input_.ConsumeIntegral<std::uint64_t>(); };
  if (input_.ConsumeBool()) {
    host_.tunable().setLogicalUnitStatistics(id, {counter(), counter(), counter()});
  }
  if (input_.ConsumeBool()) {
    host_.tunable().setPathStatistics(
        id, {counter(), counter(), counter(), input_.ConsumeIntegral<std::uint8_t>()});
  }
  if (!input_.ConsumeBool()) return;
  DiskDescription disk;
  const Value name = text(input_);
  const Value device = text(input_);
  const Value size = number(input_);
  const auto part = [&]<class T>(const Value& value, const T* typed) {
    return value && input_.ConsumeBool() ? ob::Ref<const T>::retain(typed) : nullptr;
  };
  disk.volumeName = part(name, ob::as<ob::String>(name.get()));
  disk.bsdName = part(device, ob::as<ob::String>(device.get()));
  disk.mediaSize = part(size, ob::as<ob::Number>(size.get()));
  host_.disks().set(id, std::move(disk));
}

void AnyStorage::addEntries() {
  auto& registry = host_.registry();
  registry.defineClass("DerivedUnit", std::string(registry::kLogicalUnitClass));
  registry.defineClass("DerivedPath", std::string(registry::kPathClass));
  const auto count = input_.ConsumeIntegralInRange<std::size_t>(1, kMostEntries);
  while (entries_.size() < count) {
    const EntryID id = 100 + entries_.size();
    const auto above = input_.ConsumeIntegral<std::uint16_t>();
    std::vector<EntryID> parents;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if ((above >> i) % 2 != 0) parents.push_back(entries_[i]);
    }
    registry.addEntry(id, input_.PickValueInArray(kClasses), parents, properties());
    describe(id);
    entries_.push_back(id);
  }
}

void AnyStorage::changeEntries() {
  for (const EntryID id : entries_) {
    switch (input_.ConsumeIntegralInRange(0, 3)) {
      case 0:
        host_.registry().replaceProperties(id, properties());
        break;
      case 1:
        host_.registry().removeEntry(id);
        host_.tunable().forget(id);
        host_.disks().forget(id);
        break;
      default:
        break;
    }
  }
}

}  // namespace tavrenix::fuzz
