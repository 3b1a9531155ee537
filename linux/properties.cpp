#include "linux/properties.hpp"

#include "linux/selectors.hpp"
#include "linux/tree.hpp"
#include "linux/wwid.hpp"
#include "model/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::sys {

namespace {

using Dictionary = ob::Ref<const ob::Dictionary>;

// Absent where the text is empty, as the device did not say.
ob::Ref<const ob::Object> textValue(const std::string& text) {
  if (text.empty()) return nullptr;
  return ob::String::make(printable(text));
}

ob::Ref<const ob::Object> dataValue(const std::vector<std::uint8_t>& bytes) {
  return ob::Data::make(bytes);
}

void addAlgorithm(ob::DictionaryBuilder& builder, const MultipathTable& table) {
  const Selector* selector = selectorNamed(commonSelector(table));
  if (selector == nullptr) return;  // one that the registry has no name for
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

Dictionary mediumProperties(Machine& machine, EntryID id) {
  if (!machine.exists(id)) return nullptr;
  ob::DictionaryBuilder builder(1);
  builder.add(registry::kLeaf,
              ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(isLeaf(machine, id))));
  return builder.build();
}

}  // namespace

ob::Ref<const ob::Dictionary> propertiesOf(Machine& machine, EntryID id) {
  switch (nameOf(id).kind) {
    case Kind::kUnit:
      return unitProperties(machine, id);
    case Kind::kPath:
      return pathProperties(machine, id);
    case Kind::kHost:
      return hostProperties(machine, id);
    case Kind::kMedium:
      return mediumProperties(machine, id);
    case Kind::kNone:
      break;
  }
  return nullptr;
}

ob::Ref<const ob::Object> propertyOf(Machine& machine, EntryID id, const ob::String& name) {
  // What is searched for where it never is costs nothing.
  const Kind kind = nameOf(id).kind;
  if (name.equals(registry::kControllerCharacteristics) && kind != Kind::kHost) return nullptr;
  if (name.equals(registry::kContent)) return nullptr;  // no medium here has a content hint
  const auto properties = propertiesOf(machine, id);
  return properties ? ob::Ref<const ob::Object>::retain(properties->value(name)) : nullptr;
}

std::vector<std::uint8_t> identifierOfPath(Machine& machine, EntryID path) {
  const auto where = machine.place(path);
  const DeviceNumber device = nameOf(path).device();
  return pathIdentifier(where ? where->address : std::nullopt, device.major, device.minor);
}

std::string textOfIdentifier(const std::vector<std::uint8_t>& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

}  // namespace tavrenix::sys
