// The journal on disk, and the lock that lets one run at a time change the storage.
#pragma once

#include <string>

#include "maintain/journal.hpp"

namespace tavrenix::maintain {

// Returns the journal in the file, or nothing if there is no file. Errors: throws monitor::Failure,
// which names the file, if it cannot be read or is no journal.
std::optional<Journal> readJournal(const std::string& file);

// Replaces the file whole. It is on disk when this returns, with mode 0600.
// Errors: throws monitor::Failure, which names the file.
void writeJournal(const std::string& file, const Journal& journal);

// Keeps the file's content as FILE.1, in place of an older one.
// Errors: throws monitor::Failure, which names the file.
void setJournalAside(const std::string& file);

// The lock on a journal, held until the object or the process ends. The kernel releases the lock of
// a killed process.
class JournalLock {
 public:
  // holder: who takes the lock, one line for others that are refused. Makes the journal's folder if
  // only that is missing. Errors: throws monitor::Failure, which names the holder if there is one.
  JournalLock(const std::string& journal, const std::string& holder);
  ~JournalLock();
  JournalLock(const JournalLock&) = delete;
  JournalLock& operator=(const JournalLock&) = delete;

 private:
  int descriptor_;
};

// Returns the line of the run that holds the lock, or nothing if none does.
std::optional<std::string> lockHolder(const std::string& journal);

}  // namespace tavrenix::maintain
