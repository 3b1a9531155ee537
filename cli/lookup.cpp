#include "cli/lookup.hpp"

#include "cli/owned.hpp"
#include "cli/state.hpp"

namespace tavrenix::cli {

namespace {

// Looks at every handle even after a match: of two with one identifier, the later is meant.
template <typename Handle>
Handle findLast(ObArrayRef handles, ObDictionaryRef (*copyProperties)(Handle), ObStringRef key,
                const char* text) {
  Handle found = nullptr;
  const size_t count = ObArrayGetCount(handles);
  for (size_t i = 0; i < count; ++i) {
    const auto handle = static_cast<Handle>(ObArrayGetValueAtIndex(handles, i));
    const Owned<ObDictionaryRef> properties(copyProperties(handle));
    if (properties && compareStringProperty(properties.get(), key, text) == 0) found = handle;
  }
  return found;
}

}  // namespace

int compareStringProperty(ObDictionaryRef properties, ObStringRef key, const char* text) {
  const auto value = static_cast<ObStringRef>(ObDictionaryGetValue(properties, key));
  if (value == nullptr) return -1;
  const Owned<ObStringRef> wanted(ObStringCreateWithUTF8(text));
  if (!wanted) return -1;
  return ObStringCompare(value, wanted.get());
}

MPIOLogicalUnitRef findLogicalUnitByIdentifier(const char* identifier) {
  return findLast(gLogicalUnits, MPIOLogicalUnitCopyProperties, kMPIOLogicalUnitIdentifierKey,
                  identifier);
}

MPIOLogicalUnitPathRef findPathByIdentifier(ObArrayRef paths, const char* identifier) {
  return findLast(paths, MPIOLogicalUnitPathCopyProperties, kMPIOLogicalUnitPathIdentifierKey,
                  identifier);
}

}  // namespace tavrenix::cli
