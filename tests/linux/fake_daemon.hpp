// A multipathd that answers as it is told, and may carry commands out.
#pragma once

#include <cerrno>
#include <functional>

#include "linux/path_daemon.hpp"

namespace tavrenix::test {

class FakeDaemon final : public sys::PathDaemon {
 public:
  sys::Answer<sys::DaemonReply> ask(const std::string& command) override {
    commands.push_back(command);
    return answer ? answer(command) : sys::Answer<sys::DaemonReply>{-ENOENT, {}};
  }
  std::vector<std::string> commands;
  std::function<sys::Answer<sys::DaemonReply>(const std::string&)> answer;  // none: it does not run
};

}  // namespace tavrenix::test
