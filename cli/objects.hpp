// Helpers for objects of the library: ownership, text, look-up, and the error of a change.
#pragma once

#include <tavrenix/mpio.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace tavrenix::cli {

struct Releaser {
  void operator()(ObTypeRef object) const { ObRelease(object); }
};

// Owns what a Copy or Create function returned and releases it at the end of its scope. CRef is a
// reference type of the public headers, such as ObArrayRef.
template <class CRef>
using Owned = std::unique_ptr<std::remove_pointer_t<CRef>, Releaser>;

// The handles of all logical units, as they were when the command started. Every report and look-up
// uses them. Null while no command runs.
extern ObArrayRef gLogicalUnits;

// Returns the string as printable ASCII: at most 254 characters, with one '?' for each character
// that is not printable ASCII. Returns nothing if the value is no string.
std::optional<std::string> asciiText(ObTypeRef value);

// Returns 0 if the string under the key equals the text, letter case and blanks included. Returns
// another number if it differs, if there is no string, or if the text is not UTF-8.
int compareStringProperty(ObDictionaryRef properties, ObStringRef key, const char* text);

// Return the last of the units in gLogicalUnits, or of the paths, with this identifier, borrowed
// from the array. Return NULL if there is none.
MPIOLogicalUnitRef findLogicalUnitByIdentifier(const char* identifier);
MPIOLogicalUnitPathRef findPathByIdentifier(ObArrayRef paths, const char* identifier);

// The last error of the changes that one command makes.
//
// A change that fails without an error leaves the earlier one in place, so the message of that
// change repeats the earlier description. Fixed: scripts compare the messages.
class ErrorSlot {
 public:
  // Calls `change`, which has the form bool(ObErrorRef*), and returns its result. Keeps its error.
  template <class Change>
  bool attempt(Change change) {
    ObErrorRef fresh = nullptr;
    const bool done = change(&fresh);
    if (fresh != nullptr) error_.reset(fresh);
    return done;
  }

  bool empty() const { return error_ == nullptr; }
  // Returns the description of the last error, or nothing if there is no error or it has none.
  std::optional<std::string> description() const;

 private:
  Owned<ObErrorRef> error_;
};

}  // namespace tavrenix::cli
