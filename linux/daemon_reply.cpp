#include "linux/daemon_reply.hpp"

#include <cstring>

#include "linux/text.hpp"

namespace tavrenix::sys {

DaemonReply parseDaemonReply(std::string_view text) {
  text = trim(text);
  if (text == "ok") return DaemonReply::kDone;
  if (text == "timeout") return DaemonReply::kTooLate;
  const std::string_view first = text.substr(0, text.find('\n'));
  return trim(first) == "fail" ? DaemonReply::kRefused : DaemonReply::kUnknown;
}

std::optional<std::string> frameDaemonCommand(std::string_view command) {
  constexpr std::size_t kLongestCommand = 512;
  const std::size_t length = command.size() + 1;
  if (length > kLongestCommand) return std::nullopt;
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  frame += command;
  frame += '\0';
  return frame;
}

}  // namespace tavrenix::sys
