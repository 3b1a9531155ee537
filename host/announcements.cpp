#include "host/announcements.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/registry_names.hpp"

namespace tavrenix {

using Lock = ob::MutexLock;
using Clock = std::chrono::steady_clock;

namespace {

ob::NumberMap<std::string_view> classesOf(const std::vector<Entry>& entries) {
  ob::NumberMap<std::string_view> classes(entries.size());
  for (const Entry& entry : entries) classes.set(entry.id, entry.className);
  return classes;
}

}  // namespace

KernelStatus Announcements::add(const std::shared_ptr<Registration>& registration) {
  for (;;) {
    {
      const Lock lock(mutex_);
      if (known_) {
        if (registration->ofArrivals) {
          for (const auto& [id, className] : *known_) {
            if (!backing_.isKindOf(className, registration->className)) continue;
            registration->queued.push_back({id, className});
          }
        }
        registration->busy = !registration->queued.empty();
        registrations_.push_back(registration);
        return kSuccess;
      }
    }
    if (const KernelStatus status = listEntries(); status != kSuccess) return status;
  }
}

// Lists the known entries, if that has not been done. Holds mutex_ throughout: otherwise a call of
// arrived or departed could fall between the listing and known_, and be lost.
KernelStatus Announcements::listEntries() {
  const Lock round(rounds_);
  const Lock lock(mutex_);
  if (known_) return kSuccess;
  Result<Present> present;
  do {
    present = backing_.present();
    if (present.status != kSuccess) return present.status;
  } while (!backing_.publish());
  known_ = classesOf(present.value);
  return kSuccess;
}

void Announcements::remove(const Registration& registration) {
  const Lock lock(mutex_);
  std::erase_if(registrations_, [&](const auto& one) { return one.get() == &registration; });
  read_.notifyAll();
}

std::optional<Entry> Announcements::next(Registration& registration) {
  const Lock lock(mutex_);
  registration.armed = registration.queued.empty();
  if (registration.armed) {
    registration.busy = false;
    read_.notifyAll();
    if (departuresAwaited_ && areRead(false)) {
      departuresAwaited_ = false;
      backing_.publish();  // a refusal is no loss: the round looks again
    }
    return std::nullopt;
  }
  const Entry entry = registration.queued.front();
  registration.queued.pop_front();
  return entry;
}

void Announcements::noticeDestroyedPort() {
  const Lock lock(mutex_);  // a waiting round has seen the port either living or destroyed
  read_.notifyAll();
}

bool Announcements::announce(std::chrono::milliseconds timeout) {
  const Lock round(rounds_);
  Lock lock(mutex_);
  waitUntilRead(true, timeout);
  for (;;) {
    lock.unlock();
    const auto present = backing_.present();
    if (present.status != kSuccess) return false;
    lock.lock();
    if (deliverDepartures(present.value)) {
      waitUntilRead(false, timeout);
      continue;
    }
    lock.unlock();
    const bool published = backing_.publish();
    lock.lock();
    if (!published) continue;
    deliverArrivals(present.value);
    return true;
  }
}

void Announcements::publishUnlessEntriesChanged() {
  if (!rounds_.tryLock()) return;
  const std::unique_lock<ob::Mutex> round(rounds_, std::adopt_lock);
  const auto present = backing_.present();
  if (present.status == kSuccess && !haveChanged(present.value)) backing_.publish();
}

bool Announcements::haveChanged(const Present& present) {
  const Lock lock(mutex_);
  return !missingFrom(present).empty() || !newIn(present).empty();
}

void Announcements::arrived(const Entry& entry) {
  const Lock lock(mutex_);
  if (!known_ || known_->contains(entry.id)) return;
  known_->set(entry.id, entry.className);
  deliver(entry, true);
}

void Announcements::departed(const Entry& entry) {
  const Lock lock(mutex_);
  if (!known_ || !known_->contains(entry.id)) return;
  known_->erase(entry.id);
  deliver(entry, false);
}

void Announcements::forgetEntries() {
  const Lock lock(mutex_);
  known_.reset();
}

bool Announcements::areDelivered() {
  const Lock lock(mutex_);
  return std::all_of(registrations_.begin(), registrations_.end(), [](const auto& one) {
    return (one->armed && one->queued.empty()) || one->port->isDestroyed();
  });
}

bool Announcements::areRead(bool arrivals) {
  return std::none_of(registrations_.begin(), registrations_.end(), [&](const auto& one) {
    return one->ofArrivals == arrivals && one->busy && !one->port->isDestroyed();
  });
}

void Announcements::waitUntilRead(bool arrivals, std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  departuresAwaited_ = !arrivals;
  while (!areRead(arrivals) && read_.waitUntil(mutex_, deadline)) {
  }
  departuresAwaited_ = false;
}

// Paths come before units, so that a client still knows the unit when it receives the path.
std::vector<Entry> Announcements::missingFrom(const Present& present) {
  std::vector<Entry> missing;
  if (!known_) return missing;
  const Known now = classesOf(present);
  for (auto at = known_->end(); at != known_->begin();) {
    const auto& [id, className] = *--at;
    const auto* found = now.find(id);
    if (found == nullptr || *found != className) missing.push_back({id, className});
  }
  std::stable_partition(missing.begin(), missing.end(), [&](const Entry& entry) {
    return backing_.isKindOf(entry.className, registry::kPathClass);
  });
  return missing;
}

bool Announcements::deliverDepartures(const Present& present) {
  const auto missing = missingFrom(present);
  // Arrivals that were not read in time still need a scan, and so a new generation: do not hold it.
  if (!missing.empty() && areRead(true)) backing_.holdGeneration();
  for (const Entry& entry : missing) {
    known_->erase(entry.id);
    deliver(entry, false);
  }
  return !missing.empty();
}

std::vector<Entry> Announcements::newIn(const Present& present) {
  std::vector<Entry> found;
  if (!known_) return found;
  for (const Entry& entry : present) {
    if (!known_->contains(entry.id)) found.push_back(entry);
  }
  return found;
}

void Announcements::deliverArrivals(const Present& present) {
  for (const Entry& entry : newIn(present)) {
    known_->set(entry.id, entry.className);
    deliver(entry, true);
  }
}

void Announcements::deliver(const Entry& entry, bool arrival) {
  for (const auto& one : registrations_) {
    if (one->ofArrivals != arrival || one->port->isDestroyed()) continue;
    if (!backing_.isKindOf(entry.className, one->className)) continue;
    one->queued.push_back(entry);
    one->busy = true;
    if (!std::exchange(one->armed, false)) continue;
    one->port->post([deliver = one->deliver, iterator = one->iterator] { deliver(iterator); });
  }
}

}  // namespace tavrenix
