#include "lab/simulated_host.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "lab/driver.hpp"
#include "lab/image/image_file.hpp"
#include "lab/image/image_warnings.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

using Lock = ob::MutexLock;

// Returns the error again, with the file's name in front.
ImageError named(const std::string& path, const std::exception& error) {
  return ImageError(ob::escaped(path, 1024) + ": " + error.what());
}

ob::Ref<const ob::Object> boolean(bool value) {
  return ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(value));
}

ob::Ref<const ob::Dictionary> hostDetails(const Image& image) {
  ob::DictionaryBuilder details(4);
  details.add(keys::kMPIOHostDetailBackingKey, ob::String::make("simulation"));
  details.add(keys::kMPIOHostDetailDriverPresentKey, boolean(image.generation() != 0));
  details.add(keys::kMPIOHostDetailPermittedKey, boolean(image.effectiveUser() == 0));
  details.add(keys::kMPIOHostDetailKernelReleaseKey, image.kernelRelease());
  return details.build();
}

}  // namespace

// The registry of the host. It announces changes of the file in rounds, and not each change of the
// tree in memory by itself.
class SimulatedHost::Registry final : public memory::MemoryRegistry {
 public:
  explicit Registry(SimulatedHost& host) noexcept : host_(host) {}
  bool startListening(Announcements&) override { return true; }
  void stopListening() override {}
  Result<std::vector<Entry>> present() override {
    return {kSuccess, host_.entriesToAnnounce(*this)};
  }
  bool publish() override { return host_.publishReloaded(); }
  using MemoryRegistry::classNamed;

 private:
  SimulatedHost& host_;
};

SimulatedHost::SimulatedHost(Report report)
    : memory_(std::make_unique<Registry>(*this)), report_(std::move(report)) {
  memory_.registry().setWriteHandler(
      [this](EntryID entryID, const ob::String& name, const ob::Object& value) {
        return write(entryID, name, value);
      });
}

std::vector<std::string> SimulatedHost::load(const std::string& path) {
  const Lock lock(changing_);
  try {
    std::string real = resolved(path);
    const std::string text = readImageFile(real);
    replaceImage(parse(text), true);
    path_ = path;
    resolvedPath_ = std::move(real);
    std::vector<std::string> warnings = warningsAbout(image_, text);
    for (std::string& warning : warnings)
      warning.insert(0, ob::escaped(path, 1024) + ": warning: ");
    return warnings;
  } catch (const std::exception& error) {
    throw named(path, error);
  }
}

void SimulatedHost::reload(std::chrono::milliseconds timeout) {
  {
    const Lock lock(changing_);
    try {
      reloaded_ = parse(readImageFile(resolvedPath_));
      ++version_;
    } catch (const std::exception& error) {
      throw named(path_, error);
    }
  }
  memory_.registry().announcements().announce(timeout);
}

std::vector<Entry> SimulatedHost::entriesToAnnounce(Registry& registry) {
  const Lock lock(changing_);
  lookedAt_ = version_;
  const Image& image = reloaded_ ? *reloaded_ : image_;
  std::vector<Entry> entries;
  for (const std::size_t at : image.parentsFirst()) {
    const ImageEntry& entry = image.entries()[at];
    entries.push_back({entry.id, registry.classNamed(entry.className)});
  }
  return entries;
}

bool SimulatedHost::publishReloaded() {
  const Lock lock(changing_);
  if (lookedAt_ != version_) return false;
  if (reloaded_ && reloaded_->text() != image_.text()) replaceImage(std::move(*reloaded_), true);
  reloaded_.reset();
  return true;
}

KernelStatus SimulatedHost::write(EntryID entryID, const ob::String& name,
                                  const ob::Object& value) {
  const Lock lock(changing_);
  try {
    const LockedImageFile locked(resolvedPath_);
    Image next = parse(locked.read());
    const auto ordered = next.takeWriteStatus();
    KernelStatus status = ordered.value_or(kSuccess);
    if (status == kSuccess) status = actOnWrite(next, entryID, name, value);
    // After a refusal the file stays as it is, unless the status was taken out of "writeStatuses".
    if (ordered || status == kSuccess) locked.replace(next.text());
    replaceImage(std::move(next), status == kSuccess);
    return status;
  } catch (const std::system_error& error) {
    report_(named(path_, error).what());
    return -error.code().value();
  } catch (const ImageError& error) {
    report_(named(path_, error).what());
    return -EINVAL;
  }
}

void SimulatedHost::replaceImage(Image next, bool newGeneration) {
  const auto stays = [](const ImageEntry& entry, const Image& image) {
    const ImageEntry* found = image.find(entry.id);
    return found != nullptr && found->className == entry.className;
  };
  for (const auto& [name, base] : next.classes().bases())
    memory_.registry().defineClass(name, base);
  const auto& oldOrder = image_.parentsFirst();
  for (auto at = oldOrder.rbegin(); at != oldOrder.rend(); ++at) {
    const ImageEntry& old = image_.entries()[*at];
    if (!stays(old, next)) remove(old);
  }
  for (const std::size_t at : next.parentsFirst()) {
    const ImageEntry& entry = next.entries()[at];
    const ImageEntry* old = image_.find(entry.id);
    stays(entry, image_) ? update(*old, entry) : add(entry);
  }
  memory_.setEffectiveUser(next.effectiveUser());
  memory_.details()->setHost(hostDetails(next));
  // Last, because clients scan once the generation has changed.
  memory_.tunable().setGeneration(generationOf(next, newGeneration));
  image_ = std::move(next);
  reloaded_.reset();  // it was older than `next`
  ++version_;
}

std::uint32_t SimulatedHost::generationOf(const Image& next, bool newGeneration) {
  if (next.generation() == 0) return 0;  // a driver that is not ready, on purpose
  const std::uint32_t shown = memory_.tunable().generation();
  const bool asBefore = next.generation() == image_.generation() && shown != 0;
  const std::uint32_t wanted = asBefore ? shown : next.generation();
  if (!newGeneration && wanted == shown) return shown;
  // Never returns a number that was shown before: a client that has seen it would not scan again.
  // After the largest number comes 1.
  newest_ = wanted > newest_ ? wanted : std::max(newest_ + 1, 1U);
  return newest_;
}

// The in-memory registry cannot change the base of a class. So this refuses an image in which a
// known class has another base, or a class that is in use gets one.
Image SimulatedHost::parse(std::string_view text) const {
  Image next = Image::parse(text);
  const Classes& classes = image_.classes();
  const Place top(text);
  const Place place = top.at("classes");
  for (const auto& [name, base] : classes.bases()) {
    const auto found = next.classes().bases().find(name);
    if (found == next.classes().bases().end() || found->second != base) {
      place.at(name).refuse("the class cannot change while the host runs");
    }
  }
  for (const auto& member : next.classes().bases()) {
    const std::string& name = member.first;
    const bool isNew = !classes.bases().contains(name);
    const auto isOne = [&](const ImageEntry& entry) {
      return classes.conforms(entry.className, name);
    };
    if (isNew && std::any_of(image_.entries().begin(), image_.entries().end(), isOne)) {
      place.at(name).refuse("the class cannot change while the host runs");
    }
  }
  return next;
}

void SimulatedHost::remove(const ImageEntry& entry) {
  memory_.registry().removeEntry(entry.id);
  memory_.tunable().forget(entry.id);
  memory_.disks().forget(entry.id);
  memory_.details()->set(entry.id, nullptr);
}

// Adds the entry last, so that a client that finds it finds everything that belongs to it.
void SimulatedHost::add(const ImageEntry& entry) {
  publish(entry);
  memory_.registry().addEntry(entry.id, entry.className, entry.parents, entry.properties);
}

void SimulatedHost::update(const ImageEntry& old, const ImageEntry& entry) {
  publish(entry);
  memory_.registry().replaceProperties(entry.id, entry.properties);
  if (entry.parents != old.parents) memory_.registry().replaceParents(entry.id, entry.parents);
}

void SimulatedHost::publish(const ImageEntry& entry) {
  memory::MemoryTunable& tunable = memory_.tunable();
  const auto& record = entry.statistics;
  if (!record) {
    tunable.forget(entry.id);
  } else if (entry.isPath) {
    tunable.setPathStatistics(entry.id, *record);
  } else {
    tunable.setLogicalUnitStatistics(
        entry.id, {record->bytesSent, record->bytesReceived, record->commandsProcessed});
  }
  entry.disk ? memory_.disks().set(entry.id, *entry.disk) : memory_.disks().forget(entry.id);
  memory_.details()->set(entry.id, entry.details);
}

}  // namespace tavrenix::lab
