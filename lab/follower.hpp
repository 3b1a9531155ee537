// Keeps a simulated host as its image file is, whoever changes the file.
#pragma once

#include <thread>

#include "lab/file_watch.hpp"
#include "lab/host.hpp"

namespace tavrenix::lab {

class Follower {
 public:
  // Loads the image and follows it, on a thread of its own, until the end. What is wrong with the
  // file later on is reported once; the host stays as it was until the file is good again. Throws
  // as SimulatedHost::load does.
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
