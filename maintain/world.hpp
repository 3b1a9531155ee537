// Everything that a maintenance does to the world outside its own memory. Tests have a world of
// their own.
#pragma once

#include "maintain/journal.hpp"

namespace tavrenix::maintain {

class World {
 public:
  virtual ~World() = default;

  // Reads the storage afresh. Errors: throws monitor::Failure.
  virtual monitor::Storage read() = 0;
  // Asks the driver to use the path of the unit, or not to. Errors: throws monitor::Failure if the
  // path has gone since it was read, or if the driver refuses.
  virtual void setUsed(const monitor::Unit& unit, const monitor::Path& path, bool isUsed) = 0;
  // Puts the journal on disk before it returns. Errors: throws monitor::Failure.
  virtual void keep(const Journal& journal) = 0;

  // Waits a moment before the storage is looked at again, less if the administrator stops the run.
  virtual void pause() = 0;
  virtual double seconds() = 0;   // of a clock that only goes forward
  virtual std::string now() = 0;  // "2026-11-22T07:30:00Z"

  // Returns true once the administrator has asked the run to stop.
  virtual bool isStopped() = 0;
  // Returns false if the administrator was asked to confirm the step and did not.
  virtual bool isConfirmed(const std::string& step) = 0;
  // Shows a line, or how a wait goes on; errors are ignored, since the journal is the record.
  virtual void tell(const std::string& line) = 0;
  virtual void showProgress(const std::string& text) = 0;
};

// Notes the step of a path in the journal, which is then on disk. Errors: throws monitor::Failure.
void note(World& world, Journal& journal, PathRecord& path, Step step);

}  // namespace tavrenix::maintain
