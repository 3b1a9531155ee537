#include "cli/objects.hpp"

#include <string_view>

namespace tavrenix::cli {

namespace {

constexpr std::size_t kLongestText = 254;

bool isPrintableAscii(char c) {
  return c >= ' ' && c <= '~';
}

// Returns true for the second and later bytes of a character in UTF-8.
bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Returns the last handle whose property has this text, or null. Copies the properties of all
// handles: of two with the same identifier, the later one counts.
template <class Handle>
Handle findLast(ObArrayRef handles, ObDictionaryRef (*copyProperties)(Handle), ObStringRef key,
                const char* text) {
  Handle found = nullptr;
  const std::size_t count = ObArrayGetCount(handles);
  for (std::size_t i = 0; i < count; ++i) {
    const auto handle = static_cast<Handle>(ObArrayGetValueAtIndex(handles, i));
    const Owned<ObDictionaryRef> properties(copyProperties(handle));
    if (properties && compareStringProperty(properties.get(), key, text) == 0) found = handle;
  }
  return found;
}

}  // namespace

ObArrayRef gLogicalUnits = nullptr;

std::optional<std::string> asciiText(ObTypeRef value) {
  const auto string = static_cast<ObStringRef>(value);
  const char* const utf8 = ObStringGetUTF8(string);
  if (utf8 == nullptr) return std::nullopt;
  std::string text;
  for (const char c : std::string_view(utf8, ObStringGetLength(string))) {
    if (isContinuation(c)) continue;
    if (text.size() == kLongestText) break;
    text += isPrintableAscii(c) ? c : '?';
  }
  return text;
}

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

std::optional<std::string> ErrorSlot::description() const {
  const Owned<ObStringRef> text(ObErrorCopyDescription(error_.get()));
  return asciiText(text.get());
}

}  // namespace tavrenix::cli
