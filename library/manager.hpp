// The process-wide set of logical units and paths that the registry publishes, each found by entry
// ID.
//
// It changes only inside a scan, and a scan happens only when the driver's configuration generation
// is another than at the last one. Threads: the lock is held for the whole of a scan, never while
// anything outside is called that could come back to it. Notification handlers run on threads of
// their own, so a look-up takes it as well, for that moment; apart from this clients serialise
// their calls.
#pragma once

#include <optional>

#include "model/logical_unit.hpp"

namespace tavrenix {

enum MPIORescanMode : int {
  MPIORescanAll = 1,
  MPIORescanLogicalUnit = 2,
  MPIORescanPathLogicalUnit = 3,  // so does any other value
};

struct MPIOManager {
  using Units = ob::NumberMap<ob::Ref<MPIOLogicalUnit>>;
  using Paths = ob::NumberMap<ob::Ref<MPIOLogicalUnitPath>>;

  std::unique_ptr<std::mutex> lock;
  std::optional<Units> logicalUnits;  // these two exist from initialisation to teardown
  std::optional<Paths> paths;
  bool ready = false;
  std::uint32_t lastGeneration = 0;
};

// The one manager. It is never destroyed; its contents go with MPIOManagerTeardown.
MPIOManager& manager() noexcept;

// At load, after the handle classes are registered: makes what is missing and scans for the first
// time.
void MPIOManagerInitialize() noexcept;
// At exit. Takes no lock.
void MPIOManagerTeardown() noexcept;
// Brings the dictionaries up to date where the generation has moved. handle: nothing for mode 1, a
// logical unit for mode 2, a path for mode 3; a handle of the other kind takes note of the
// generation and selects nothing. Failures end the scan quietly.
void MPIOManagerRescan(int mode, const ob::Object* handle) noexcept;

// The objects known under the entry ID; none where there is none.
ob::Ref<MPIOLogicalUnit> knownLogicalUnit(EntryID entryID) noexcept;
ob::Ref<MPIOLogicalUnitPath> knownPath(EntryID entryID) noexcept;
// All logical units, in no particular order; none where there is no dictionary of them.
ob::Ref<ob::Array> allLogicalUnits();

}  // namespace tavrenix
