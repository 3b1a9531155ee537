#include "monitor/public_value.hpp"

#include <algorithm>

namespace tavrenix::monitor {

namespace {

// The member under key if it is of that kind, otherwise null.
ObTypeRef member(ObDictionaryRef from, ObStringRef key, ObTypeID kind) {
  const ObTypeRef value = from == nullptr ? nullptr : ObDictionaryGetValue(from, key);
  return ObGetTypeID(value) == kind ? value : nullptr;
}

}  // namespace

std::optional<std::string> textOf(ObTypeRef value) {
  if (ObGetTypeID(value) != ObStringGetTypeID()) return std::nullopt;
  const auto string = static_cast<ObStringRef>(value);
  return std::string(ObStringGetUTF8(string), ObStringGetLength(string));
}

std::optional<std::string> text(ObDictionaryRef from, ObStringRef key) {
  return textOf(member(from, key, ObStringGetTypeID()));
}

std::optional<std::uint64_t> number(ObDictionaryRef from, ObStringRef key) {
  const auto value = static_cast<ObNumberRef>(member(from, key, ObNumberGetTypeID()));
  std::uint64_t result = 0;
  if (value == nullptr || !ObNumberGetUInt64(value, &result)) return std::nullopt;
  return result;
}

std::optional<bool> boolean(ObDictionaryRef from, ObStringRef key) {
  const ObTypeRef value = member(from, key, ObBooleanGetTypeID());
  if (value == nullptr) return std::nullopt;
  return value == kObBooleanTrue;
}

std::optional<std::string> bytesAsText(ObDictionaryRef from, ObStringRef key) {
  const auto data = static_cast<ObDataRef>(member(from, key, ObDataGetTypeID()));
  if (data == nullptr || ObDataGetLength(data) == 0) return std::nullopt;
  const std::uint8_t* const begin = ObDataGetBytes(data);
  const std::uint8_t* const end = begin + ObDataGetLength(data);
  if (std::all_of(begin, end, [](std::uint8_t byte) { return byte > 0x20 && byte < 0x7F; })) {
    return std::string(begin, end);
  }
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  std::for_each(begin, end, [&](std::uint8_t byte) {
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 0xF];
  });
  return digits;
}

ObArrayRef array(ObDictionaryRef from, ObStringRef key) {
  return static_cast<ObArrayRef>(member(from, key, ObArrayGetTypeID()));
}

}  // namespace tavrenix::monitor
