// What multipathd answers to a command.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::sys {

enum class DaemonReply {
  kDone,     // "ok"
  kRefused,  // "fail", with or without a reason behind it
  kTooLate,  // "timeout": the daemon was busy for longer than it waits itself
  kUnknown,
};

// text without the length in front of it; a final zero byte and blanks at the end are passed over.
DaemonReply parseDaemonReply(std::string_view text);

// The message that carries command: its length as the machine's size_t, then the text and a zero
// byte. Nothing where the daemon would not take so long a command.
std::optional<std::string> frameDaemonCommand(std::string_view command);

}  // namespace tavrenix::sys
