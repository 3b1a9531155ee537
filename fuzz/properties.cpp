// Properties of every wrong kind, on entries of any shape, behind the model and the reports.
#include <cerrno>

#include "fuzz/any_storage.hpp"
#include "fuzz/captured.hpp"
#include "fuzz/promise.hpp"
#include "fuzz/session.hpp"
#include "tests/support/library_host.hpp"

using namespace tavrenix;

void tavrenix::fuzz::run(std::string_view bytes) {
  const fuzz::Captured diagnostics(stderr);  // the library tells of counters that it lacks
  FuzzedDataProvider input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  const test::LibraryHost host;
  const KernelStatus answer = input.ConsumeBool() ? kSuccess : -EINVAL;
  host->memory.registry().setWriteHandler(
      [&](EntryID, const ob::String&, const ob::Object&) { return answer; });
  fuzz::AnyStorage storage(host->memory, input);
  storage.addEntries();
  test::touch(host->memory);
  {
    const test::Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
    fuzz::useAll(units);
    fuzz::runCommands(units);
    storage.changeEntries();
    fuzz::useAll(units);  // by handles of what may be gone
    test::touch(host->memory);
    fuzz::useAll(units);  // each rescans what it stands for
    fuzz::runCommands(units);
  }
  fuzz::expect(host->memory.registry().openHandles() == 0, "no handle stays open");
}
