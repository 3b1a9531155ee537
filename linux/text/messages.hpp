// Messages of other processes: events from the kernel and from udevd, commands to multipathd and
// its replies.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::sys {

// An event of a device, as the kernel sends it (netlink group 1) or as udevd sends it on after its
// rules have run (group 2).
struct Uevent {
  std::string_view properties;  // NAME=VALUE, each ended by a zero byte
  // Returns the value of the first property of that name; empty if there is none.
  std::string_view value(std::string_view name) const;
};

// Reads one datagram. Returns std::nullopt if it is neither "ACTION@PATH" followed by properties
// nor udevd's own form, or if a length in it leads outside.
// Ownership: the event borrows the message.
std::optional<Uevent> parseUevent(std::string_view message);

// Returns true if the event may have changed units, paths, their tables or their media.
bool concernsStorage(const Uevent& event);

enum class DaemonReply {
  kDone,     // "ok"
  kRefused,  // "fail", with or without a reason
  kTooLate,  // "timeout": the daemon was busy for longer than it waits itself
  kUnknown,
};

// Reads a reply of multipathd without its length. Ignores a zero byte and blanks at the end.
DaemonReply parseDaemonReply(std::string_view text);

// Returns the message that carries the command: its length as a native size_t, the text and a zero
// byte. Returns std::nullopt if the daemon does not take so long a command.
std::optional<std::string> frameDaemonCommand(std::string_view command);

}  // namespace tavrenix::sys
