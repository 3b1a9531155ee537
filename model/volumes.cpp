// MPIOLogicalUnit: the volumes of its media.
#include "host/entry.hpp"
#include "model/keys.hpp"
#include "model/logical_unit.hpp"

namespace tavrenix {

namespace {

// Returns the low 32 bits of a number, 1 or 0 for a boolean, and 0 for anything else.
std::uint32_t lowWord(const ob::Object* value) {
  if (const auto* boolean = ob::as<ob::Boolean>(value)) return boolean->value() ? 1 : 0;
  const auto* number = ob::as<ob::Number>(value);
  return number == nullptr ? 0 : static_cast<std::uint32_t>(number->bits());
}

// Returns true if a medium holds a volume: a leaf does and a shared volume does, but a component of
// a shared volume does not.
bool holdsVolume(MPIODeviceRegistry& registry, RegistryHandle media) {
  const auto leaf = registry.copyProperty(media, registry::kLeaf);
  const auto hint = registry.copyProperty(media, registry::kContent);
  const auto* text = ob::as<ob::String>(hint.get());
  const std::string_view content = text == nullptr ? std::string_view() : text->view();
  if (content == registry::kSharedVolumeComponentContent) return false;
  return content == registry::kSharedVolumeContent || lowWord(leaf.get()) == 1;
}

}  // namespace

void MPIOLogicalUnit::rebuildVolumes() {
  MPIODeviceRegistry& registry = host_.registry();
  bool walked = false;
  ob::Array::Values volumes;
  forEachRelative(
      registry, serviceEntryID_, kIterateRecursively, [&] { walked = true; },
      [&](RegistryHandle entry) {
        if (!registry.conformsTo(entry, registry::kMediaClass) || !holdsVolume(registry, entry))
          return;
        if (auto volume = volumeInfoForLUNVolume(host_, entry))
          volumes.push_back(std::move(volume));
      });
  if (walked) volumes_.store(ob::Array::make(std::move(volumes)));
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnit::volumeInfoForLUNVolume(MPIOHost& host,
                                                                      RegistryHandle media) {
  if (media == 0) return nullptr;
  auto description = host.disks().describe(media);
  if (!description || !description->volumeName) return nullptr;
  ob::DictionaryBuilder builder(3);
  builder.add(keys::kMPIOLogicalUnitVolumeNameKey, std::move(description->volumeName));
  builder.add(keys::kMPIOLogicalUnitVolumeSizeKey, std::move(description->mediaSize));
  // Fixed: the key speaks of a mount point, but its value is the device's name. Clients depend on
  // it.
  builder.add(keys::kMPIOLogicalUnitVolumeMountPointKey, std::move(description->bsdName));
  return builder.build();
}

}  // namespace tavrenix
