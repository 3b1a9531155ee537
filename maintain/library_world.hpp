// The world of a run of the program: the library's storage, the journal on disk, and the
// administrator at a terminal.
#pragma once

#include "maintain/stop_signals.hpp"
#include "maintain/world.hpp"

namespace tavrenix::maintain {

// "2026-11-22T07:30:00Z"
std::string utcNow();

class LibraryWorld final : public World {
 public:
  struct Manners {
    bool asksBeforeSteps = false;  // waits for a line on standard input before each step
    bool tellsOnError = false;     // on standard error, since a document goes to standard output
  };
  LibraryWorld(std::string journalFile, Manners manners);

  monitor::Storage read() override;
  void setUsed(const monitor::Unit& unit, const monitor::Path& path, bool isUsed) override;
  void keep(const Journal& journal) override;
  void pause() override;
  double seconds() override;
  std::string now() override;
  bool isStopped() override;
  bool isConfirmed(const std::string& step) override;
  void tell(const std::string& line) override;
  void showProgress(const std::string& text) override;

 private:
  void write(const std::string& text) const;

  const std::string journalFile_;
  const Manners manners_;
  const int output_;
  const bool isTerminal_;
  bool isProgressShown_ = false;
  StopSignals signals_;
};

}  // namespace tavrenix::maintain
