#include "linux/notifications.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tavrenix::sys {

using Lock = std::lock_guard<std::mutex>;

Notifications::Notifications(Lister lister, Opener opener)
    : lister_(std::move(lister)), opener_(std::move(opener)) {}

Notifications::~Notifications() {
  if (!listener_.joinable()) return;
  source_->stop();
  listener_.join();
}

int Notifications::startListening() {
  if (listener_.joinable()) return 0;
  auto source = opener_();
  if (!source) return errno != 0 ? -errno : -EIO;
  source_.emplace(std::move(*source));
  try {
    listener_ = std::thread([this] { listen(); });
  } catch (const std::system_error& error) {
    return -error.code().value();
  }
  return 0;
}

void Notifications::listen() {
  while (source_->wait() == EventSource::Heard::kChange) {
    const Lock lock(mutex_);
    look(false);
  }
}

int Notifications::add(const std::shared_ptr<Registration>& registration) {
  const Lock lock(mutex_);
  // Before anything is listed, so that nothing falls between.
  if (const int status = startListening(); status != 0) return status;
  const std::string& className = registration->className;
  if (!known_.contains(className)) {
    const auto listed = lister_(className);
    if (listed.status != 0 && listed.status != -ENXIO) return listed.status;
    auto& known = known_[className];
    for (const EntryID entry : listed.value) known.set(entry, true);
  } else {
    look(false);  // others hear of what this one finds present
  }
  if (registration->ofArrivals) {
    for (const auto& [entry, present] : known_[className]) registration->waiting.push_back(entry);
  }
  all_.push_back(registration);
  return 0;
}

void Notifications::remove(const Registration& registration) {
  const Lock lock(mutex_);
  std::erase_if(all_, [&](const auto& one) { return one.get() == &registration; });
  const bool watched = std::any_of(all_.begin(), all_.end(), [&](const auto& one) {
    return one->className == registration.className;
  });
  if (!watched) known_.erase(registration.className);
}

std::optional<EntryID> Notifications::next(Registration& registration) {
  const Lock lock(mutex_);
  registration.armed = registration.waiting.empty();
  if (!registration.armed) {
    const EntryID entry = registration.waiting.front();
    registration.waiting.pop_front();
    return entry;
  }
  registration.busy = false;
  if (arrivalsWait_) look(false);
  return std::nullopt;
}

std::uint32_t Notifications::shown(std::uint32_t fresh) {
  const Lock lock(mutex_);
  // A caller who would scan now hears of departures first. Arrivals wait for their event, and so
  // for udev.
  if (fresh != shown_ && !all_.empty()) look(true);
  if (departuresAreTakenUp()) shown_ = fresh;
  return shown_;
}

void Notifications::look(bool departuresOnly) {
  for (auto& [className, known] : known_) lookAt(className, known, true);
  arrivalsWait_ = arrivalsWait_ || !departuresOnly;
  if (!arrivalsWait_ || !departuresAreTakenUp()) return;
  arrivalsWait_ = false;
  for (auto& [className, known] : known_) lookAt(className, known, false);
}

void Notifications::lookAt(const std::string& className, Known& known, bool departuresOnly) {
  const auto listed = lister_(className);
  if (listed.status != 0 && listed.status != -ENXIO) return;  // nothing is known: nothing changed
  Known now;
  for (const EntryID entry : listed.value) now.set(entry, true);
  std::vector<EntryID> gone;
  for (const auto& [entry, present] : known) {
    if (!now.contains(entry)) gone.push_back(entry);
  }
  for (const EntryID entry : gone) {
    known.erase(entry);
    tell(className, entry, false);
  }
  if (departuresOnly) return;
  for (const EntryID entry : listed.value) {
    if (known.contains(entry)) continue;
    known.set(entry, true);
    tell(className, entry, true);
  }
}

void Notifications::tell(const std::string& className, EntryID entry, bool arrived) {
  for (const auto& one : all_) {
    if (one->ofArrivals != arrived || one->className != className || one->port->isDestroyed()) {
      continue;
    }
    one->waiting.push_back(entry);
    one->busy = true;
    if (!std::exchange(one->armed, false)) continue;
    one->port->post([deliver = one->deliver, handle = one->handle] { deliver(handle); });
  }
}

bool Notifications::departuresAreTakenUp() const {
  return std::none_of(all_.begin(), all_.end(), [](const auto& one) {
    return !one->ofArrivals && one->busy && !one->port->isDestroyed();
  });
}

}  // namespace tavrenix::sys
