// The command on this machine's storage.
#include <unistd.h>

#include "cli/command.hpp"

int main(int argc, char** argv) {
  return tavrenixMain(argc, argv, ::geteuid);
}
