// The public functions and keys of details.h.
#include <tavrenix/details.h>

#include "library/call.hpp"

using namespace tavrenix;

namespace {

ob::Ref<const ob::Dictionary> detailsOf(MPIODetails& details, const MPIOLogicalUnit& unit) {
  return details.ofLogicalUnit(unit.serviceEntryID());
}

ob::Ref<const ob::Dictionary> detailsOf(MPIODetails& details, const MPIOLogicalUnitPath& path) {
  const auto unit = path.matchingLogicalUnit();
  return details.ofPath(unit ? unit->serviceEntryID() : 0, path.serviceEntryID());
}

template <class Model>
ObDictionaryRef copyDetails(const void* handle) {
  return withHandle<Model, ObDictionaryRef>(handle, [](auto& model) -> ObDictionaryRef {
    MPIODetails* details = sharedHost().details();
    if (details == nullptr || !isPresent(model)) return nullptr;
    return handOut<ObDictionaryRef>(detailsOf(*details, model));
  });
}

ob::Ref<const ob::Dictionary> hostDetails(MPIOHost& host) {
  MPIODetails* details = host.details();
  const auto known = details == nullptr ? nullptr : details->ofHost();
  ob::DictionaryBuilder all(8);
  if (known) {
    for (const auto& [key, value] : known->pairs()) all.add(*key, value);
  }
  const std::uint64_t generation = configurationGeneration(host.tunable());
  if (generation != 0) all.add(keys::kMPIOHostDetailGenerationKey, ob::Number::make(generation));
  return all.build();
}

}  // namespace

extern "C" {

#define TAVRENIX_EXPORT(name, text) \
  const ObStringRef name = reinterpret_cast<ObStringRef>(&tavrenix::keys::name##Storage);
TAVRENIX_DETAIL_KEYS(TAVRENIX_EXPORT)
#undef TAVRENIX_EXPORT

uint32_t MPIOGetVersion(void) {
  return MPIO_VERSION;
}

void MPIOHostRefresh(void) {
  MPIOManagerSetOutdated();
}

ObDictionaryRef MPIOLogicalUnitCopyDetails(MPIOLogicalUnitRef unit) {
  return copyDetails<MPIOLogicalUnit>(unit);
}

ObDictionaryRef MPIOLogicalUnitPathCopyDetails(MPIOLogicalUnitPathRef path) {
  return copyDetails<MPIOLogicalUnitPath>(path);
}

ObDictionaryRef MPIOHostCopyDetails(void) {
  return withPool<ObDictionaryRef>(
      [] { return handOut<ObDictionaryRef>(hostDetails(sharedHost())); });
}

}  // extern "C"
