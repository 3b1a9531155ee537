// The simulated host: an in-memory host that shows what an image file says. Its driver carries out
// requests by changing that file.
//
// Thread safety: every function may be called on any thread.
#pragma once

#include <chrono>
#include <functional>

#include "host/memory/memory_host.hpp"
#include "lab/image/image.hpp"

namespace tavrenix::lab {

class SimulatedHost {
 public:
  // Takes one line, without a newline, about a fault that no status can describe.
  using Report = std::function<void(std::string_view line)>;

  // Starts with generation 0, so that clients take the driver for not ready.
  explicit SimulatedHost(Report report);
  SimulatedHost(const SimulatedHost&) = delete;
  SimulatedHost& operator=(const SimulatedHost&) = delete;

  // Reads the image file and shows it from then on. Returns warnings about parts of the file that
  // have no effect, one line each. REQUIRES: it is called once.
  // Errors: throws ImageError, with the path at the front of its text. The host stays as it was.
  std::vector<std::string> load(const std::string& path);
  // Reads the file again and makes a round of announcements. If the image has changed, the
  // generation changes, even if the file keeps its number. Each wait for clients takes at most
  // `timeout`.
  // Errors: the same as load.
  static constexpr std::chrono::milliseconds kDepartureTimeout{1000};
  void reload(std::chrono::milliseconds timeout = kDepartureTimeout);

  memory::MemoryHost& memory() noexcept { return memory_; }

 private:
  class Registry;

  std::vector<Entry> entriesToAnnounce(Registry& registry) OB_EXCLUDES(changing_);
  bool publishReloaded() OB_EXCLUDES(changing_);
  KernelStatus write(EntryID entryID, const ob::String& name, const ob::Object& value)
      OB_EXCLUDES(changing_);
  // Shows `next` instead of image_. Entries with the same ID and class are updated; the others are
  // removed and added. If `newGeneration`, the generation becomes one that was not shown before.
  void replaceImage(Image next, bool newGeneration) OB_REQUIRES(changing_);
  std::uint32_t generationOf(const Image& next, bool newGeneration) OB_REQUIRES(changing_);
  // Returns the image in the text. Errors: throws ImageError if this host cannot show it.
  Image parse(std::string_view text) const OB_REQUIRES(changing_);
  void remove(const ImageEntry& entry);
  void add(const ImageEntry& entry);
  void update(const ImageEntry& old, const ImageEntry& entry);
  void publish(const ImageEntry& entry);

  memory::MemoryHost memory_;
  Report report_;
  ob::Mutex changing_;                         // held while memory_ changes
  std::string path_ OB_GUARDED_BY(changing_);  // as the caller named it, for messages
  std::string resolvedPath_ OB_GUARDED_BY(changing_);
  Image image_ OB_GUARDED_BY(changing_);                    // what is shown
  std::optional<Image> reloaded_ OB_GUARDED_BY(changing_);  // what is to be shown next
  std::uint64_t version_ OB_GUARDED_BY(changing_) = 0;      // counts changes of the two images
  std::uint64_t lookedAt_ OB_GUARDED_BY(changing_) = 0;     // the version that was listed last
  std::uint32_t newest_ OB_GUARDED_BY(changing_) = 0;       // the last generation that was new
};

// Returns the one simulated host of this process. sharedHost() returns its memory().
SimulatedHost& simulatedHost();

}  // namespace tavrenix::lab
