// What the library may answer.
#pragma once

#include <tavrenix/mpio.h>

#include <initializer_list>
#include <optional>
#include <string>

namespace tavrenix::soak {

// What is wrong with the error that a call handed out, or nothing: it must stand in the table of
// codes and messages, with a result code where the table says so, and only where the call failed.
std::optional<std::string> faultOf(ObErrorRef error, bool done);

// What is wrong with the values of a dictionary, or nothing: under each key stands nothing or a
// value of its kind.
struct ExpectedKind {
  ObStringRef key;
  ObTypeID kind;
};
std::optional<std::string> faultOf(ObDictionaryRef dictionary,
                                   std::initializer_list<ExpectedKind> expected);

}  // namespace tavrenix::soak
