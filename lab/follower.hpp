// Follows the image file of a simulated host: after each change of the file, the host shows what
// the file says.
#pragma once

#include <string>
#include <thread>

#include "lab/simulated_host.hpp"
#include "runtime/posix.hpp"

namespace tavrenix::lab {

// A watch on one file. It notices a write in place, a replacement by a rename, and a removal.
class FileWatch {
 public:
  // Notices changes from now on. REQUIRES: path is resolved.
  // Errors: throws std::system_error.
  explicit FileWatch(const std::string& path);

  // Waits for a change, and until no further one follows at once. Returns false after stop().
  // Thread safety: only one thread may wait.
  bool wait();
  // Thread safety: may be called on any thread.
  void stop() noexcept;

 private:
  // Reads the events that are queued. Returns true if one of them is about the file.
  bool readEvents();

  std::string name_;  // of the file in its folder
  ob::FileDescriptor events_;
  ob::FileDescriptor stopped_;
};

class Follower {
 public:
  // Loads the image and reports each warning about it. Then follows the file, on a thread of its
  // own, until the follower is destroyed. If the file becomes unusable, that is reported once, and
  // the host stays as it was until the file is usable again. Errors: the same as
  // SimulatedHost::load.
  Follower(SimulatedHost& host, const std::string& path, SimulatedHost::Report report);
  ~Follower();
  Follower(const Follower&) = delete;
  Follower& operator=(const Follower&) = delete;

 private:
  void follow();

  SimulatedHost& host_;
  SimulatedHost::Report report_;
  FileWatch watch_;
  std::thread thread_;
};

}  // namespace tavrenix::lab
