#include "linux/notifications.hpp"

#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "runtime/signals.hpp"

namespace tavrenix::sys {

namespace {

// How soon to look again where the machine could not be read, a map on its way out for instance.
constexpr std::chrono::milliseconds kRetry(100);

// A change comes with many events. The machine is looked at when they have stopped coming, or go on
// for long.
constexpr std::chrono::milliseconds kQuiet(5);
constexpr int kMostQuiets = 40;

Entries sorted(Entries entries) {
  std::sort(entries.begin(), entries.end());
  entries.erase(std::unique(entries.begin(), entries.end()), entries.end());
  return entries;
}

// What is in the first and not in the second; both ascend.
Entries without(const Entries& first, const Entries& second) {
  Entries rest;
  std::set_difference(first.begin(), first.end(), second.begin(), second.end(),
                      std::back_inserter(rest));
  return rest;
}

}  // namespace

Notifications::Notifications(Lister lister, Opener opener)
    : lister_(std::move(lister)), opener_(std::move(opener)) {}

Notifications::~Notifications() {
  stopListening();
}

bool Notifications::portMade() {
  const Lock lock(ports_);
  if (portCount_ == 0 && !startListening()) return false;
  ++portCount_;
  return true;
}

void Notifications::portDestroyed() {
  const Lock lock(ports_);
  if (--portCount_ == 0) {
    stopListening();
    return;
  }
  const Lock state(mutex_);  // so that who is about to wait has seen the port destroyed
  takenUp_.notify_all();
}

bool Notifications::startListening() {
  auto source = opener_();
  if (!source) return false;
  source_.emplace(std::move(*source));
  stopping_ = false;  // there is no other thread yet
  const ob::AllSignalsBlocked blocked;
  try {
    listener_ = std::thread([this] { listen(); });
  } catch (const std::system_error&) {
    source_.reset();
  }
  return listener_.joinable();
}

void Notifications::stopListening() {
  if (!listener_.joinable()) return;
  {
    const Lock lock(mutex_);
    stopping_ = true;
    takenUp_.notify_all();
  }
  source_->stop();
  listener_.join();
  source_.reset();
  const Lock lock(mutex_);
  watched_.clear();  // from now on changes are missed
  known_.clear();
  held_ = false;
}

EventSource::Heard Notifications::hear(std::optional<std::chrono::milliseconds> patience) {
  auto heard = source_->wait(patience);
  for (int i = 0; i < kMostQuiets && heard == EventSource::Heard::kChange; ++i) {
    heard = source_->wait(kQuiet);
  }
  return heard;
}

void Notifications::listen() {
  pthread_setname_np(pthread_self(), "storage-events");
  std::optional<std::chrono::milliseconds> patience;
  for (;;) {
    const auto heard = hear(patience);
    if (heard == EventSource::Heard::kStop || heard == EventSource::Heard::kBroken) return;
    Lock lock(mutex_);
    bool complete = false;
    try {
      complete = tellChanges(lock);
    } catch (const std::bad_alloc&) {  // later there may be more memory
    }
    patience = complete ? std::nullopt : std::optional(kRetry);
  }
}

bool Notifications::tellChanges(Lock& lock) {
  waitUntilTakenUp(lock, true);
  while (!stopping_) {
    const auto present = list();
    if (!present) return false;
    if (!tellDepartures(*present)) {
      tellArrivals(*present);
      break;
    }
    waitUntilTakenUp(lock, false);
  }
  return true;
}

std::optional<Entries> Notifications::list() {
  if (watched_.empty()) return Entries{};
  auto listed = lister_(watched_);
  if (listed.status != 0 && listed.status != -ENXIO) return std::nullopt;
  return sorted(std::move(listed.value));
}

bool Notifications::tellDepartures(const Entries& present) {
  const Entries gone = without(known_, present);
  if (gone.empty()) return false;
  known_ = without(known_, gone);
  held_ = registrations_.areTakenUp(true);
  heldUntil_ = Clock::now() + kLongestHold;
  // Paths before units: an entry ID begins with the kind.
  for (auto at = gone.rbegin(); at != gone.rend(); ++at) registrations_.changed(*at, false);
  return true;
}

void Notifications::tellArrivals(const Entries& present) {
  const Entries come = without(present, known_);
  known_ = present;
  for (const EntryID entry : come) registrations_.changed(entry, true);
}

void Notifications::waitUntilTakenUp(Lock& lock, bool arrivals) {
  takenUp_.wait_until(lock, Clock::now() + kLongestHold,
                      [&] { return stopping_ || registrations_.areTakenUp(arrivals); });
  if (!arrivals) held_ = false;
}

int Notifications::watch(const std::string& className) {
  if (std::find(watched_.begin(), watched_.end(), className) != watched_.end()) return 0;
  auto listed = lister_({className});
  if (listed.status != 0 && listed.status != -ENXIO) return listed.status;
  // What another registration is still to be told of stays unknown, and is told to both.
  std::erase_if(listed.value, [&](EntryID entry) {
    return std::any_of(watched_.begin(), watched_.end(),
                       [&](const auto& one) { return conforms(entry, one); });
  });
  known_.insert(known_.end(), listed.value.begin(), listed.value.end());
  known_ = sorted(std::move(known_));
  watched_.push_back(className);
  return 0;
}

int Notifications::add(const std::shared_ptr<Registration>& registration) {
  const Lock lock(mutex_);
  const auto& request = registration->request;
  if (const int status = watch(request.className); status != 0) return status;
  if (request.ofArrivals) {
    std::copy_if(known_.begin(), known_.end(), std::back_inserter(registration->waiting),
                 [&](EntryID entry) { return conforms(entry, request.className); });
  }
  registrations_.add(registration);
  return 0;
}

void Notifications::remove(const Registration& registration) {
  const Lock lock(mutex_);
  registrations_.remove(registration);
  takenUp_.notify_all();
}

std::optional<EntryID> Notifications::next(Registration& registration) {
  const Lock lock(mutex_);
  auto entry = registration.next();
  if (!entry) takenUp_.notify_all();
  return entry;
}

bool Notifications::isHeld() {
  held_ = held_ && !registrations_.areTakenUp(false) && Clock::now() < heldUntil_;
  return held_;
}

std::uint32_t Notifications::shown(std::uint32_t fresh) {
  const Lock lock(mutex_);
  // A caller who would scan now hears of departures first. Arrivals wait for their event, and so
  // for udev.
  if (fresh != shown_ && !watched_.empty() && !isHeld() && registrations_.areTakenUp(true)) {
    if (const auto present = list()) tellDepartures(*present);
  }
  if (!isHeld()) shown_ = fresh;
  return shown_;
}

}  // namespace tavrenix::sys
