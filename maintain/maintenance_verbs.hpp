// The verbs of tavrenix-maintain. Each gets the words from the verb on and the journal's usual
// file, and returns the exit status: 0 for done, 1 after a surprise, 2 for a plan that is refused.
// Errors: each throws monitor::Failure, and has then changed nothing.
#pragma once

#include <string>

namespace tavrenix::maintain {

int runPlan(int argc, char** argv, const std::string& journal);
int runDrain(int argc, char** argv, const std::string& journal);
int runJournalStatus(int argc, char** argv, const std::string& journal);
int runUndo(int argc, char** argv, const std::string& journal);
int runRestore(int argc, char** argv, const std::string& journal);

}  // namespace tavrenix::maintain
