// Run loops: a thread waits in its loop, and sources that were added to it are performed there when
// they have been signalled.
//
// A loop has modes, named by strings: a run performs the sources of one mode only.
// Ownership: a loop holds the sources that were added to it until they are removed or invalidated,
// or until its thread ends, which removes them all. Threads: run and performDue belong to the
// loop's own thread; everything else, retain and release included, may be called on any thread.
// Calls that add, remove and invalidate one and the same source are the client's to put in order.
// The callbacks of a source are made without any lock held, so they may call anything.
#pragma once

#include <limits>
#include <mutex>
#include <utility>
#include <vector>

#include "runtime/string.hpp"

namespace ob {

class RunLoop;

// The mode for clients that need no other.
inline constinit ConstantString kDefaultModeStorage("Default");
inline constexpr const String& kDefaultMode = kDefaultModeStorage.string;

class RunLoopSource : public Object {
 public:
  static constexpr TypeID kType = kRunLoopSourceType;

  // Has the source performed once by one of the loops that it is in, now or later, and wakes them.
  // Signals that come before it is performed count as one.
  void signal();
  // Removes it from every loop and mode, each with its cancel callback. It can never be added
  // again.
  void invalidate();
  bool isValid() const;

  TypeID typeID() const noexcept override { return kType; }

 protected:
  // Called by the thread that adds, within the call.
  virtual void schedule(RunLoop&, const String& /*mode*/) {}
  // Called by the thread that removes or invalidates, within the call.
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
  // The caller holds mutex_.
  Memberships::iterator membership(const RunLoop& loop, const String& mode);

  mutable std::mutex mutex_;  // taken before a loop's
  bool valid_ = true;
  Memberships memberships_;
  std::atomic<bool> signalled_{false};
};

class RunLoop final : public Object {
 public:
  static constexpr TypeID kType = kRunLoopType;
  enum class Result { kFinished = 1, kStopped, kTimedOut };
  static constexpr double kForever = std::numeric_limits<double>::infinity();

  // The loop of this thread, borrowed from it. Throws std::system_error where it cannot be made.
  static RunLoop& current();
  ~RunLoop() override;

  // True where the source is in the mode afterwards; false for an invalid source or an ended
  // thread.
  bool add(RunLoopSource& source, const String& mode) { return source.join(*this, mode); }
  // False where it was not in the mode.
  bool remove(RunLoopSource& source, const String& mode) { return source.leave(*this, mode); }
  bool contains(const RunLoopSource& source, const String& mode) const;

  // Performs the mode's sources as they are signalled, for so many seconds or kForever; 0 or less
  // does what is due and does not wait. Ends early when the loop is stopped or no source is left in
  // the mode. Runs may be nested; a stop ends the innermost.
  Result run(const String& mode, double seconds);
  // Performs what is due in the mode and does not wait. False where nothing was due.
  bool performDue(const String& mode);

  // Ends the run that is on, or the next one where none is.
  void stop() noexcept;
  void wakeUp() noexcept;
  // Readable when there may be something to perform in any mode, until performDue or run is called.
  int descriptor() const noexcept { return descriptor_; }

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

  // A run or performDue that is on. The wake that it takes may have been for another mode, or for
  // a run around it that is to end: it is passed on afterwards.
  struct Pass {
    explicit Pass(RunLoop& itsLoop) noexcept : loop(itsLoop) { ++loop.depth_; }
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    RunLoop& loop;
  };

  const int descriptor_;
  std::size_t depth_ = 0;  // of passes; the own thread's alone
  std::atomic<bool> stopped_{false};
  mutable std::mutex mutex_;
  bool ended_ = false;
  std::vector<Member> members_;
};

}  // namespace ob
