// A reference that owns nothing and never dangles: it reads as none once its target is gone.
//
// The target has a WeakAnchor<T> as a member. Another object keeps the anchor's cell and asks the
// cell for the target. The cell lives as long as anything refers to it, even after the target.
#pragma once

#include "runtime/mutex.hpp"
#include "runtime/object.hpp"

namespace ob {

template <class T>
class WeakCell final : public Object {
 public:
  explicit WeakCell(T* target) noexcept : target_(target) {}

  // Returns a new reference to the target, or none if the target is gone or being destroyed.
  // Thread safety: any thread.
  Ref<T> load() const noexcept {
    const MutexLock lock(mutex_);
    if (target_ == nullptr || !target_->tryRetain()) return nullptr;
    return Ref<T>::adopt(target_);
  }
  void clear() noexcept {
    const MutexLock lock(mutex_);
    target_ = nullptr;
  }
  TypeID typeID() const noexcept override { return kWeakCellType; }

 private:
  mutable Mutex mutex_;
  T* target_ OB_GUARDED_BY(mutex_);
};

template <class T>
class WeakAnchor {
 public:
  explicit WeakAnchor(T* self) : cell_(make<WeakCell<T>>(self)) {}
  WeakAnchor(const WeakAnchor&) = delete;
  WeakAnchor& operator=(const WeakAnchor&) = delete;
  ~WeakAnchor() { cell_->clear(); }
  Ref<WeakCell<T>> cell() const noexcept { return cell_; }

 private:
  Ref<WeakCell<T>> cell_;
};

}  // namespace ob
