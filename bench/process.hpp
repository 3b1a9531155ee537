// Measures whole processes, from start to end.
#pragma once

namespace tavrenix::bench {

struct StartTimes {
  double tool;       // microseconds; the median of many runs of `tavrenix` without arguments
  double emptyTool;  // the same for /bin/true; the two programs run in turn
};
// Returns zeros if a process cannot be started.
StartTimes measureStart();

}  // namespace tavrenix::bench
