// The simulated host: an in-memory host that shows what an image file says, and whose driver
// answers writes by changing that file.
//
// Threads: every operation may be called on any thread; changes are made one after the other.
#pragma once

#include <chrono>
#include <functional>

#include "lab/image.hpp"
#include "model/memory/host.hpp"

namespace tavrenix::lab {

class SimulatedHost {
 public:
  // Is told, in one line without its end, of what no status can carry.
  using Report = std::function<void(std::string_view line)>;

  // Not ready, generation 0, until an image is loaded.
  explicit SimulatedHost(Report report);
  SimulatedHost(const SimulatedHost&) = delete;
  SimulatedHost& operator=(const SimulatedHost&) = delete;

  // Once: reads the image file and shows it from then on. Throws ImageError with the path in front;
  // then the host is as it was.
  void load(const std::string& path);
  // Reads the file again. As load in its failures. Clients are told of departures first; until they
  // have taken these up no generation moves, since the handles are forgotten then. They get some
  // time for that, and for what they were told of before. In the end the generation moves with
  // every change, also where the file does not say so.
  static constexpr std::chrono::milliseconds kPatience{1000};
  void reload(std::chrono::milliseconds patience = kPatience);

  memory::MemoryHost& memory() noexcept { return memory_; }

 private:
  KernelStatus write(EntryID entryID, const ob::String& name, const ob::Object& value);
  // Makes the live host show next instead of what it shows, by as few arrivals and departures as
  // can be: an entry stays unless it went or its class is another one. What moved is shown under
  // a generation that was not shown before.
  void adopt(Image next, bool moved);
  std::uint32_t generationOf(const Image& next, bool moved);
  // Takes out what the file no longer has; whether there was anything.
  bool removeDeparted(bool pathsOnly);
  void tellDepartures(std::chrono::milliseconds patience);
  // False where patience ends first.
  bool waitUntilTold(std::chrono::milliseconds patience);
  bool stays(const ImageEntry& old, const Image& next) const;
  // The image in text; throws ImageError where the live host could not show it.
  Image parse(std::string_view text) const;
  void remove(const ImageEntry& entry);
  void add(const ImageEntry& entry);
  void update(const ImageEntry& entry);
  void publish(const ImageEntry& entry);

  memory::MemoryHost memory_;
  Report report_;
  std::mutex changing_;  // guards what follows, and the order of changes to memory_
  std::string path_;     // as the caller named it, for messages
  std::string resolvedPath_;
  Image image_;
  ob::NumberMap<bool> departed_;  // of image_, but taken out already
  std::uint32_t newest_ = 0;      // the generation that was last new
};

// The one of this process; sharedHost() is its memory().
SimulatedHost& simulatedHost();

}  // namespace tavrenix::lab
