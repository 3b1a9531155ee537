// tavrenix-maintain: the front end of maintenance on this machine, as a client of the shared
// library.
#include "maintain/maintenance_program.hpp"

int main(int argc, char** argv) {
  return tavrenix::maintain::runMaintain(argc, argv, "tavrenix-maintain",
                                         "/var/lib/tavrenix/maintenance.json");
}
