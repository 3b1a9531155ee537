// C references in tests: owned ones released at the end of their scope, and short ways to look
// inside.
#pragma once

#include <tavrenix/mpio.h>

#include <string>
#include <utility>
#include <vector>

namespace tavrenix::test {

template <class CRef>
class Owned {
 public:
  explicit Owned(CRef reference = nullptr) noexcept : reference_(reference) {}
  Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(reference_, other.reference_);
    return *this;
  }
  ~Owned() { ObRelease(reference_); }
  CRef get() const noexcept { return reference_; }
  CRef* out() noexcept { return &reference_; }
  explicit operator bool() const noexcept { return reference_ != nullptr; }

 private:
  CRef reference_;
};

inline std::string utf8(const void* string) {
  const char* text = ObStringGetUTF8(static_cast<ObStringRef>(string));
  return text == nullptr ? "<none>" : text;
}
inline std::string textUnder(ObDictionaryRef dictionary, ObStringRef key) {
  return utf8(ObDictionaryGetValue(dictionary, key));
}
template <class CRef>
CRef at(const Owned<ObArrayRef>& array, std::size_t index) {
  return static_cast<CRef>(ObArrayGetValueAtIndex(array.get(), index));
}

// The unit of storage (in the order of its making) and its paths, as handles borrowed from the
// arrays.
struct Handles {
  Owned<ObArrayRef> units{MPIOCopyLogicalUnits()};
  MPIOLogicalUnitRef unit(std::size_t index = 0) const {
    return at<MPIOLogicalUnitRef>(units, index);
  }
  Owned<ObArrayRef> paths(std::size_t index = 0) const {
    return Owned<ObArrayRef>(MPIOLogicalUnitCopyPaths(unit(index)));
  }
};

}  // namespace tavrenix::test
