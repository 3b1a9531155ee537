#include <unistd.h>

#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/verbs.hpp"

namespace tavrenix::monitor {

int runJson(int argc, char** argv) {
  const CommandLine line(argc, argv, {{"units", 'U'}, {"paths", 'P'}, {"watch", 'W', true}}, 0);
  if (line.has('U') && line.has('P')) throw Failure("give --units or --paths, not both");
  constexpr std::uint64_t kLongestPause = 86'400;
  const auto pause = line.number('W', 1, kLongestPause);
  for (;;) {
    const Storage storage = readStorageWithProgress();
    // Printed when it is whole: a failure before leaves nothing on standard output.
    print(
        textOf(line.has('P') ? documentOfPaths(storage) : documentOfUnits(storage, !line.has('U')),
               pause.has_value()));
    if (!pause) return 0;
    ::sleep(static_cast<unsigned>(*pause));
  }
}

}  // namespace tavrenix::monitor
