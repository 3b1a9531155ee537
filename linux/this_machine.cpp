// The one host of the programs and libraries that are linked with this folder.
#include <unistd.h>

#include "linux/kernel/device_mapper.hpp"
#include "linux/registry/linux_host.hpp"

namespace tavrenix {

namespace {

struct ThisMachine {
  sys::KernelDeviceMapper port;
  sys::MultipathdSocket daemon;
  sys::LinuxHost host{sys::HostFiles(), port, daemon, ::geteuid()};
};

}  // namespace

MPIOHost& sharedHost() {
  static ThisMachine& machine = *new ThisMachine;  // never destroyed: exit handlers still use it
  return machine.host;
}

}  // namespace tavrenix
