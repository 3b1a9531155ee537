// A reference that owns nothing and never dangles: where its target is gone it reads as none.
//
// The target holds a WeakAnchor<T> and hands out its cell; whoever keeps the cell asks it for the
// target.
#pragma once

#include <mutex>

#include "runtime/object.hpp"

namespace ob {

template <class T>
class WeakCell final : public Object {
 public:
  explicit WeakCell(T* target) noexcept : target_(target) {}

  // The target, retained; none where it is gone or going.
  Ref<T> load() const noexcept {
    const std::lock_guard lock(mutex_);
    if (target_ == nullptr || !target_->tryRetain()) return nullptr;
    return Ref<T>::adopt(target_);
  }
  void clear() noexcept {
    const std::lock_guard lock(mutex_);
    target_ = nullptr;
  }
  TypeID typeID() const noexcept override { return kWeakCellType; }

 private:
  mutable std::mutex mutex_;
  T* target_;
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
