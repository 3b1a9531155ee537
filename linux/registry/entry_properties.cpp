#include "linux/registry/entry_properties.hpp"

#include "host/registry_names.hpp"
#include "linux/registry/selectors.hpp"
#include "linux/text/identity.hpp"
#include "linux/topology/tree.hpp"
#include "runtime/byte_text.hpp"
#include "runtime/values.hpp"

namespace tavrenix::sys {

namespace {

using Dictionary = ob::Ref<const ob::Dictionary>;

// Returns the text as a value. Returns null if it is empty: the dictionary then lacks the key.
ob::Ref<const ob::Object> textValue(const std::string& text) {
  if (text.empty()) return nullptr;
  return ob::String::make(ob::printable(text));
}

ob::Ref<const ob::Object> dataValue(const std::vector<std::uint8_t>& bytes) {
  return ob::Data::make(bytes);
}

void addAlgorithm(ob::DictionaryBuilder& builder, const MultipathTable& table) {
  const Selector* selector = selectorNamed(commonSelector(table));
  if (selector == nullptr) return;  // the registry has no name for it
  builder.add(registry::kLoadBalancingAlgorithm,
              ob::Ref<const ob::String>::retain(selector->algorithm));
  if (selector->name == kRoundRobinSelector) {
    builder.add(registry::kBatchCount, ob::Number::make(repeatCount(table)));
  }
}

Dictionary unitProperties(Machine& machine, EntryID id) {
  const auto unit = machine.unit(id);
  if (!unit) return nullptr;
  const Identity identity = machine.identityOf(id);
  ob::DictionaryBuilder builder(7);
  if (const auto designator = designatorOf(unit->lines.uuid)) {
    builder.add(registry::kUniqueIdentifier, dataValue(*designator));
  }
  builder.add(registry::kAlias, textValue(unit->lines.name));
  builder.add(registry::kVendor, textValue(identity.vendor));
  builder.add(registry::kProduct, textValue(identity.product));
  builder.add(registry::kPeripheralDeviceType, ob::Number::make(std::int64_t{identity.type}));
  if (unit->table) addAlgorithm(builder, *unit->table);
  return builder.build();
}

Dictionary pathProperties(Machine& machine, EntryID id) {
  if (!machine.place(id)) return nullptr;
  const Identity identity = machine.identityOfPath(id);
  ob::DictionaryBuilder builder(4);
  builder.add(registry::kPathIdentifier, dataValue(identifierOfPath(machine, id)));
  if (const auto interconnect = textValue(machine.interconnectOfPath(id))) {
    ob::DictionaryBuilder protocol(1);
    protocol.add(registry::kPhysicalInterconnect, interconnect);
    builder.add(registry::kProtocolCharacteristics, protocol.build());
  }
  builder.add(registry::kVendor, textValue(identity.vendor));
  builder.add(registry::kProduct, textValue(identity.product));
  return builder.build();
}

Dictionary hostProperties(Machine& machine, EntryID id) {
  if (!machine.exists(id)) return nullptr;
  ob::DictionaryBuilder controller(1);
  const auto port = machine.portIdentifierOfHost(id);
  if (!port.empty()) controller.add(registry::kSCSIPortIdentifier, dataValue(port));
  ob::DictionaryBuilder builder(1);
  builder.add(registry::kControllerCharacteristics, controller.build());
  return builder.build();
}

Dictionary leafProperties(bool isLeaf) {
  ob::DictionaryBuilder builder(1);
  builder.add(registry::kLeaf, ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(isLeaf)));
  return builder.build();
}

Dictionary mediumProperties(Machine& machine, EntryID id) {
  if (!machine.exists(id)) return nullptr;
  // Never destroyed: exit handlers still use them.
  static const auto& ofLeaf = *new Dictionary(leafProperties(true));
  static const auto& ofOther = *new Dictionary(leafProperties(false));
  return isLeaf(machine, id) ? ofLeaf : ofOther;
}

// Returns true if the unit's dictionary holds what its paths say of it. A path that could not be
// read may answer the next time.
bool hasIdentity(const ob::Dictionary& unit) {
  return unit.value(registry::kVendor) != nullptr || unit.value(registry::kProduct) != nullptr;
}

}  // namespace

ob::Ref<const ob::Dictionary> EntryProperties::all(EntryID id) {
  switch (keyOf(id).kind) {
    case Kind::kUnit:
    case Kind::kHost:
      return keptOrMade(id);
    case Kind::kPath:
      return pathProperties(machine_, id);
    case Kind::kMedium:
      return mediumProperties(machine_, id);
    case Kind::kNone:
      break;
  }
  return nullptr;
}

ob::Ref<const ob::Dictionary> EntryProperties::keptOrMade(EntryID id) {
  const Machine::Look look(machine_);
  const std::uint64_t number = machine_.snapshotNumber();
  {
    const ob::MutexLock lock(mutex_);
    if (snapshot_ != number) kept_ = {};
    snapshot_ = number;
    if (const auto* kept = kept_.find(id)) return *kept;
  }
  const bool isUnit = keyOf(id).kind == Kind::kUnit;
  auto made = isUnit ? unitProperties(machine_, id) : hostProperties(machine_, id);
  if (!made || (isUnit && !hasIdentity(*made))) return made;
  // Another thread's question may have made a new snapshot, from which some of this may be.
  const bool isOfOne = machine_.snapshotNumber() == number;
  const ob::MutexLock lock(mutex_);
  if (isOfOne && snapshot_ == number) kept_.set(id, made);
  return made;
}

ob::Ref<const ob::Object> EntryProperties::one(EntryID id, const ob::String& name) {
  // Skips reads that cannot succeed: only hosts have controller characteristics.
  const Kind kind = keyOf(id).kind;
  if (name.equals(registry::kControllerCharacteristics) && kind != Kind::kHost) return nullptr;
  if (name.equals(registry::kContent)) return nullptr;  // no medium here has a content hint
  const auto properties = all(id);
  return properties ? ob::Ref<const ob::Object>::retain(properties->value(name)) : nullptr;
}

std::vector<std::uint8_t> identifierOfPath(Machine& machine, EntryID path) {
  const auto place = machine.place(path);
  return pathIdentifier(place ? *place : Place{}, keyOf(path).device());
}

}  // namespace tavrenix::sys
