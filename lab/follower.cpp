#include "lab/follower.hpp"

#include <exception>
#include <system_error>

#include "lab/fault.hpp"
#include "runtime/signals.hpp"

namespace tavrenix::lab {

namespace {

// Watched before it is read, so that no change falls between the two.
FileWatch watchOn(const std::string& path) {
  try {
    return FileWatch(resolved(path));
  } catch (const std::system_error& error) {
    throw ImageError(printable(path, 1024) + ": " + error.what());
  }
}

}  // namespace

Follower::Follower(SimulatedHost& host, const std::string& path, SimulatedHost::Report report)
    : host_(host), report_(std::move(report)), watch_(watchOn(path)) {
  host_.load(path);
  const ob::AllSignalsBlocked blocked;
  thread_ = std::thread([this] { follow(); });
}

Follower::~Follower() {
  watch_.stop();
  thread_.join();
}

void Follower::follow() {
  std::string reported;
  while (watch_.wait()) {
    try {
      host_.reload();
      reported.clear();
    } catch (const std::exception& error) {
      if (reported != error.what()) report_(error.what());
      reported = error.what();
    }
  }
}

}  // namespace tavrenix::lab
