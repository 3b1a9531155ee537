// The front end of tavrenix-maintain, as each of its programs calls it.
#pragma once

#include <string>

namespace tavrenix::maintain {

// Runs the verb that argv names and returns the exit status. program: the name in messages.
// journal: the file that is used unless the command line names another.
// REQUIRES: argc is at least 1, and every other thread of the process blocks all signals.
int runMaintain(int argc, char** argv, const char* program, const std::string& journal);

}  // namespace tavrenix::maintain
