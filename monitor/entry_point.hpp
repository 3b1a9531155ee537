// The front end of tavrenix-monitor, as each of its programs calls it.
#pragma once

namespace tavrenix::monitor {

// Runs the verb that argv names and returns the exit status. program: the name in messages.
// REQUIRES: argc is at least 1.
int runMonitor(int argc, char** argv, const char* program);

}  // namespace tavrenix::monitor
