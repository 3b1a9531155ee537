// Whole processes, from their start to their end.
#pragma once

namespace tavrenix::bench {

struct StartTimes {
  double tool;       // microseconds, the median of many starts of `tavrenix` without arguments
  double emptyTool;  // the same of /bin/true, started in turn with it
};
// Zeros where a process cannot be started.
StartTimes measureStart();

}  // namespace tavrenix::bench
