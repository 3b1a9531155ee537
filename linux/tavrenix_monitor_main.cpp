// tavrenix-monitor: the monitor's front end on this machine, as a client of the shared library.
#include "monitor/entry_point.hpp"

int main(int argc, char** argv) {
  return tavrenix::monitor::runMonitor(argc, argv, "tavrenix-monitor");
}
