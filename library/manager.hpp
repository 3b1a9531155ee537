// The process-wide manager: the known logical units and paths, by entry ID. Its dictionaries change
// only in a scan. A scan runs only if the driver's configuration generation has changed since the
// scan before.
//
// Thread safety: every function may be called on any thread, even after the teardown. A scan holds
// the lock from its beginning to its end, and so does each look-up. No lock is held while a client
// is called.
#pragma once

#include <atomic>
#include <optional>

#include "host/tunable.hpp"
#include "model/logical_unit.hpp"
#include "runtime/mutex.hpp"

namespace tavrenix {

enum MPIORescanMode : int {
  MPIORescanAll = 1,
  MPIORescanLogicalUnit = 2,
  MPIORescanPathLogicalUnit = 3,  // every other value means the same
};

// The known units and paths, by entry ID.
struct MPIODictionaries {
  ob::NumberMap<ob::Ref<MPIOLogicalUnit>> logicalUnits{8};
  ob::NumberMap<ob::Ref<MPIOLogicalUnitPath>> paths{8};
};

struct MPIOManager {
  ob::Mutex lock;
  // Nothing before the initialisation.
  std::optional<MPIODictionaries> dictionaries OB_GUARDED_BY(lock);
  std::uint32_t lastGeneration OB_GUARDED_BY(lock) = 0;  // at the last scan
  bool outdated OB_GUARDED_BY(lock) = false;             // the next scan of all is not left out
  std::atomic<bool> ended{false};  // the teardown has run: nothing is known any more
};

// Returns the one manager. It is never destroyed.
MPIOManager& manager() noexcept;

// Makes the dictionaries if there are none, and rescans. Runs when the library is loaded, after the
// two handle classes are registered.
// Errors: if memory runs out, the library knows no units until this is called again.
void MPIOManagerInitialize() noexcept;
// Ends the manager when the process exits. Waits for no lock: if another thread is scanning, the
// dictionaries stay until the process ends.
void MPIOManagerTeardown() noexcept;
// Scans if the generation has changed. `handle` is null in mode MPIORescanAll. In the two other
// modes it is a logical unit or a path, and only that unit, or the unit of that path, is scanned. A
// handle of the wrong kind marks the new generation as seen, but scans nothing. A failure ends the
// scan silently.
void MPIOManagerRescan(int mode, const ob::Object* handle) noexcept;

// Makes the next rescan of all units scan, even if the generation has been seen.
void MPIOManagerSetOutdated() noexcept;

// Returns the driver's configuration generation as it is now, or 0 if the driver does not answer.
std::uint32_t configurationGeneration(MPIOKernelTunable& tunable);

// Returns the object known under the entry ID, or null.
ob::Ref<MPIOLogicalUnit> knownLogicalUnit(EntryID entryID) noexcept;
ob::Ref<MPIOLogicalUnitPath> knownPath(EntryID entryID) noexcept;
// Returns all logical units in no particular order, or null before the initialisation and after the
// teardown.
// Errors: throws std::bad_alloc.
ob::Ref<ob::Array> allLogicalUnits();

}  // namespace tavrenix
