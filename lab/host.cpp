#include "lab/host.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>

#include "lab/driver.hpp"
#include "lab/image_file.hpp"

namespace tavrenix::lab {

namespace {

using Lock = std::lock_guard<std::mutex>;

// Runs the operation on the file of that name; whatever fails becomes an ImageError that names it.
template <class Operation>
auto onFile(const std::string& path, const Operation& operation) {
  const std::string name = printable(path, 1024);
  try {
    return operation();
  } catch (const std::system_error& error) {
    throw ImageError(name + ": " + error.what());
  } catch (const ImageError& error) {
    throw ImageError(name + ": " + error.what());
  }
}

}  // namespace

SimulatedHost::SimulatedHost(Report report) : report_(std::move(report)) {
  memory_.registry().setWriteHandler(
      [this](EntryID entryID, const ob::String& name, const ob::Object& value) {
        return write(entryID, name, value);
      });
}

void SimulatedHost::load(const std::string& path) {
  const Lock lock(changing_);
  onFile(path, [&] {
    std::string real = resolved(path);
    adopt(parse(readImageFile(real)), true);
    path_ = path;
    resolvedPath_ = std::move(real);
  });
}

void SimulatedHost::reload(std::chrono::milliseconds patience) {
  tellDepartures(patience);
  const Lock lock(changing_);
  onFile(path_, [&] {
    Image next = parse(readImageFile(resolvedPath_));
    if (!departed_.empty() || next.text() != image_.text()) adopt(std::move(next), true);
  });
}

void SimulatedHost::tellDepartures(std::chrono::milliseconds patience) {
  // Whoever is still to take up arrivals needs the scan that is held off here.
  std::optional<memory::MemoryTunable::HeldGeneration> held;
  if (waitUntilTold(patience)) held.emplace(memory_.tunable());
  if (removeDeparted(true)) waitUntilTold(patience);
  if (removeDeparted(false)) waitUntilTold(patience);
}

bool SimulatedHost::removeDeparted(bool pathsOnly) {
  const Lock lock(changing_);
  return onFile(path_, [&] {
    const Image next = parse(readImageFile(resolvedPath_));
    const auto& order = image_.parentsFirst();
    bool any = false;
    for (auto at = order.rbegin(); at != order.rend(); ++at) {
      const ImageEntry& old = image_.entries()[*at];
      if (departed_.contains(old.id) || stays(old, next) || (pathsOnly && !old.isPath)) continue;
      remove(old);
      departed_.set(old.id, true);
      any = true;
    }
    return any;
  });
}

// Not under the lock: a client may be within a call that changes something. One that never comes to
// take up what it is told of does not hold up the others for longer than this.
bool SimulatedHost::waitUntilTold(std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kStep(1);
  for (;; patience -= kStep) {
    if (memory_.registry().notificationsAreSettled()) return true;
    if (patience < kStep) return false;
    std::this_thread::sleep_for(kStep);
  }
}

KernelStatus SimulatedHost::write(EntryID entryID, const ob::String& name,
                                  const ob::Object& value) {
  const Lock lock(changing_);
  const std::string file = printable(path_, 1024);
  try {
    const LockedImageFile locked(resolvedPath_);
    Image next = parse(locked.read());
    const auto ordered = next.takeWriteStatus();
    KernelStatus status = ordered.value_or(kSuccess);
    if (status == kSuccess) status = actOnWrite(next, entryID, name, value);
    // A refusal changes the file only where it was one of those that wait in it.
    if (ordered || status == kSuccess) locked.replace(next.text());
    adopt(std::move(next), status == kSuccess);
    return status;
  } catch (const std::system_error& error) {
    report_(file + ": " + error.what());
    return -error.code().value();
  } catch (const ImageError& error) {
    report_(file + ": " + error.what());
    return -EINVAL;
  }
}

bool SimulatedHost::stays(const ImageEntry& old, const Image& next) const {
  const ImageEntry* found = next.find(old.id);
  return found != nullptr && found->className == old.className && !departed_.contains(old.id);
}

void SimulatedHost::adopt(Image next, bool moved) {
  // Whoever is told of an arrival finds all of it, the generation included.
  const memory::MemoryRegistry::HeldNotifications held(memory_.registry());
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
    old != nullptr&& stays(*old, next) ? update(entry) : add(entry);
  }
  memory_.setEffectiveUser(next.effectiveUser());
  // Last, because it is what makes others look.
  memory_.tunable().setGeneration(generationOf(next, moved));
  image_ = std::move(next);
  departed_.clear();
}

std::uint32_t SimulatedHost::generationOf(const Image& next, bool moved) {
  if (next.generation() == 0) return 0;  // a driver that is not ready, on purpose
  const std::uint32_t shown = memory_.tunable().generation();
  const bool asBefore = next.generation() == image_.generation() && shown != 0;
  const std::uint32_t wanted = asBefore ? shown : next.generation();
  if (!moved && wanted == shown) return shown;
  // Never a number from before: a client may have taken note of any of them, and would not look
  // again. Past the last number comes the first.
  newest_ = wanted > newest_ ? wanted : std::max(newest_ + 1, 1U);
  return newest_;
}

// A class that the host shows entries of, or derives others from, keeps its base.
Image SimulatedHost::parse(std::string_view text) const {
  Image next = Image::parse(text);
  const Classes& classes = image_.classes();
  const Place top;
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
}

// What belongs to the entry is there before the entry is, and so whoever meets it finds all of it.
void SimulatedHost::add(const ImageEntry& entry) {
  publish(entry);
  memory_.registry().addEntry(entry.id, entry.className, entry.parents, entry.properties);
}

void SimulatedHost::update(const ImageEntry& entry) {
  publish(entry);
  memory_.registry().replaceProperties(entry.id, entry.properties);
  memory_.registry().replaceParents(entry.id, entry.parents);
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
}

}  // namespace tavrenix::lab
