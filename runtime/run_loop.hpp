// Run loops: a thread waits in its loop, and the loop performs its sources that were signalled.
//
// A loop has modes, named by strings. A run performs the sources of one mode.
// Ownership: a loop holds a source until the source is removed or invalidated. The end of a thread
// removes all sources of its loop.
// Thread safety: only the loop's own thread may call run and performDue. Any thread may call the
// rest, retain and release included. The client serialises the calls that add, remove and
// invalidate one source.
// Locks: a source's callbacks run without a lock, so they may call every function of this file.
#pragma once

#include <limits>
#include <utility>
#include <vector>

#include "runtime/mutex.hpp"
#include "runtime/posix.hpp"
#include "runtime/string.hpp"

namespace ob {

class RunLoop;

// The mode of clients that need only one.
OB_CONSTANT_STRING(kDefaultMode, "Default");

class RunLoopSource : public Object {
 public:
  static constexpr TypeID kType = kRunLoopSourceType;

  // Makes one of the loops that the source is in, or will be in, perform it once, and wakes these
  // loops. Several signals before the source is performed count as one.
  void signal();
  // Removes the source from every loop and mode, with a cancel callback for each. An invalid source
  // can never be added again.
  void invalidate();
  bool isValid() const;

  TypeID typeID() const noexcept override { return kType; }

 protected:
  // Called within RunLoop::add, on its thread.
  virtual void schedule(RunLoop&, const String& /*mode*/) {}
  // Called within RunLoop::remove or invalidate, on their thread.
  virtual void cancel(RunLoop&, const String& /*mode*/) {}
  // Called on the thread of a loop that the source is in.
  virtual void perform() {}

 private:
  friend class RunLoop;
  struct Membership {
    Ref<RunLoop> loop;
    Ref<const String> mode;
  };
  using Memberships = std::vector<Membership>;

  bool join(RunLoop& loop, const String& mode);
  bool leave(RunLoop& loop, const String& mode);
  bool takeSignal(const RunLoop& loop, const String& mode);
  Memberships::iterator membership(const RunLoop& loop, const String& mode) OB_REQUIRES(mutex_);

  mutable Mutex mutex_;  // locked before the mutex of a loop
  bool valid_ OB_GUARDED_BY(mutex_) = true;
  Memberships memberships_ OB_GUARDED_BY(mutex_);
  std::atomic<bool> signalled_{false};
};

class RunLoop final : public Object {
 public:
  static constexpr TypeID kType = kRunLoopType;
  enum class Result { kFinished = 1, kStopped, kTimedOut };
  static constexpr double kForever = std::numeric_limits<double>::infinity();

  // Returns the loop of this thread, borrowed from the thread.
  // Errors: throws std::system_error if no event descriptor is left.
  static RunLoop& current();

  // Adds the source to the mode and returns true, also if it was there already. Returns false for
  // an invalid source and for the loop of a thread that has ended.
  bool add(RunLoopSource& source, const String& mode) { return source.join(*this, mode); }
  // Removes the source from the mode. Returns false if it was not there.
  bool remove(RunLoopSource& source, const String& mode) { return source.leave(*this, mode); }
  bool contains(const RunLoopSource& source, const String& mode) const;

  // Performs the sources of the mode as they are signalled, for that many seconds or kForever. With
  // 0 seconds or less, performs the sources that are due and does not wait. Ends early if the loop
  // is stopped or no source is left in the mode. Runs may be nested; a stop ends the innermost.
  Result run(const String& mode, double seconds);
  // Performs the sources of the mode that are due and does not wait. Returns false if none was due.
  bool performDue(const String& mode);

  // Ends the current run, or the next one if there is none.
  void stop() noexcept;
  // Makes a waiting run look for due sources again.
  void wakeUp() noexcept;
  // Returns a descriptor for poll. It becomes readable when a source of any mode may be due, and
  // stays so until performDue or run.
  int descriptor() const noexcept { return descriptor_.get(); }

  TypeID typeID() const noexcept override { return kType; }

 private:
  friend class RunLoopSource;
  struct OfThread;
  using Member = std::pair<Ref<const String>, Ref<RunLoopSource>>;

  RunLoop();
  bool enter(RunLoopSource& source, const String& mode);
  Ref<RunLoopSource> withdraw(const RunLoopSource& source, const String& mode) noexcept;
  std::vector<Ref<RunLoopSource>> members(const String& mode) const;
  bool performEach(const std::vector<Ref<RunLoopSource>>& sources, const String& mode);
  bool isAnythingDue() const noexcept;
  void end();

  // A call of run or performDue in progress. It has consumed the wake of the descriptor, which
  // another mode or an outer run may have needed. So its end wakes the loop again if it is nested
  // or if a source is still due.
  struct Pass {
    explicit Pass(RunLoop& itsLoop) noexcept : loop(itsLoop) { ++loop.depth_; }
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    RunLoop& loop;
  };

  const FileDescriptor descriptor_;
  std::size_t depth_ = 0;  // number of nested passes; used on the loop's own thread only
  std::atomic<bool> stopped_{false};
  mutable Mutex mutex_;
  bool ended_ OB_GUARDED_BY(mutex_) = false;
  std::vector<Member> members_ OB_GUARDED_BY(mutex_);
};

}  // namespace ob
