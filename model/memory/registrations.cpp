#include "model/memory/registrations.hpp"

#include <algorithm>

namespace tavrenix::memory {

ob::Ref<Entry> Registration::next() {
  armed = waiting.empty();
  if (armed) return nullptr;
  ob::Ref<Entry> entry = std::move(waiting.front());
  waiting.pop_front();
  return entry;
}

void Registrations::add(std::shared_ptr<Registration> registration) {
  registration->madeAt = changes_;
  all_.push_back(std::move(registration));
}

void Registrations::remove(const Registration& registration) {
  std::erase_if(all_, [&](const auto& one) { return one.get() == &registration; });
}

void Registrations::changed(ob::Ref<Entry> entry, bool arrived) {
  if (all_.empty() && holds_ == 0) return;
  Change change{std::move(entry), arrived, ++changes_};
  if (holds_ != 0) {
    held_.push_back(std::move(change));
  } else {
    tell(change);
  }
}

void Registrations::letGo() {
  if (--holds_ != 0) return;
  for (const Change& change : held_) tell(change);
  held_.clear();
}

void Registrations::tell(const Change& change) {
  for (const auto& one : all_) {
    if (one->ofArrivals != change.arrived || one->madeAt >= change.number) continue;
    if (!change.entry->itsClass.conformsTo(one->className) || one->port->isDestroyed()) continue;
    one->waiting.push_back(change.entry);
    if (!std::exchange(one->armed, false)) continue;
    one->port->post([deliver = one->deliver, handle = one->handle] { deliver(handle); });
  }
}

bool Registrations::isSettled() const {
  return held_.empty() && std::all_of(all_.begin(), all_.end(), [](const auto& one) {
           return (one->armed && one->waiting.empty()) || one->port->isDestroyed();
         });
}

}  // namespace tavrenix::memory
