// The command on this machine's storage.
#include <unistd.h>

#include "cli/main.hpp"

int main(int argc, char** argv) {
  return tavrenixMain(argc, argv, ::geteuid);
}
