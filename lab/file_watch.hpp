// Tells that a file may have changed: written in place, replaced by a rename, or taken away.
#pragma once

#include <string>

#include "lab/image_file.hpp"

namespace tavrenix::lab {

class FileWatch {
 public:
  // path is resolved. What happens to it from now on is told of. Throws std::system_error.
  explicit FileWatch(const std::string& path);

  // Returns true when something has happened to the file and a moment has passed in which nothing
  // more did, false once stop has been called. One thread waits.
  bool wait();
  // On any thread.
  void stop() noexcept;

 private:
  // Whether something happened to the file among the events that are there to be read.
  bool readEvents();

  std::string name_;  // in its folder
  File events_;
  File stopped_;
};

}  // namespace tavrenix::lab
