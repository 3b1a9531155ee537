// Reading the library's values: references that are released, and members of dictionaries as C++
// values.
#pragma once

#include <tavrenix/details.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace tavrenix::monitor {

struct Release {
  void operator()(const void* object) const { ObRelease(object); }
};
// Owns one reference of the library's; Ref is ObArrayRef and so on.
template <class Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

// Each returns nothing if the member is absent or of another kind. Zero bytes inside a text are
// kept.
std::optional<std::string> textOf(ObTypeRef value);
std::optional<std::string> text(ObDictionaryRef from, ObStringRef key);
std::optional<std::uint64_t> number(ObDictionaryRef from, ObStringRef key);
std::optional<bool> boolean(ObDictionaryRef from, ObStringRef key);
// Returns the bytes of a data value: as they are if they are all printable ASCII, as upper-case
// hexadecimal digits otherwise.
std::optional<std::string> bytesAsText(ObDictionaryRef from, ObStringRef key);
// Null if the member is no array. Borrowed from the dictionary.
ObArrayRef array(ObDictionaryRef from, ObStringRef key);

// Calls visit for each element, in order. array: may be null.
template <class Visit>
void forEach(ObArrayRef array, Visit visit) {
  const std::size_t count = ObArrayGetCount(array);
  for (std::size_t i = 0; i < count; ++i) visit(ObArrayGetValueAtIndex(array, i));
}

}  // namespace tavrenix::monitor
