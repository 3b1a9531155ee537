// Arrays and dictionaries: immutable once made. Builders fill them.
#pragma once

#include <vector>

#include "runtime/ordered_map.hpp"
#include "runtime/string.hpp"

namespace ob {

class Array final : public Object {
 public:
  static constexpr TypeID kType = kArrayType;
  using Values = std::vector<Ref<const Object>>;
  static Ref<Array> make(Values values) { return ob::make<Array>(std::move(values)); }
  explicit Array(Values values) noexcept : values_(std::move(values)) {}
  const Values& values() const noexcept { return values_; }
  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  Values values_;
};

struct StringKeyTraits {
  using KeyView = const String&;
  static const String& view(const Ref<const String>& key) noexcept { return *key; }
  static bool same(const String& a, const Ref<const String>& b) noexcept {
    return &a == b.get() || a.view() == b->view();
  }
  static std::size_t hash(const String& key) noexcept {
    return std::hash<std::string_view>{}(key.view());
  }
};

class Dictionary final : public Object {
 public:
  static constexpr TypeID kType = kDictionaryType;
  using Pairs = OrderedMap<Ref<const String>, Ref<const Object>, StringKeyTraits>;
  static Ref<Dictionary> make(Pairs pairs) { return ob::make<Dictionary>(std::move(pairs)); }
  explicit Dictionary(Pairs pairs) noexcept : pairs_(std::move(pairs)) {}
  const Pairs& pairs() const noexcept { return pairs_; }

  // The value under key, borrowed; null where there is none.
  const Object* value(const String& key) const noexcept {
    const auto* found = pairs_.find(key);
    return found == nullptr ? nullptr : found->get();
  }
  // The value under key where it is a T, borrowed; null where it is absent or of another kind.
  template <class T>
  const T* valueAs(const String& key) const noexcept;

  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  Pairs pairs_;
};

// The pairs of a dictionary in the making. Absent values are left out, as every report wants it.
class DictionaryBuilder {
 public:
  explicit DictionaryBuilder(std::size_t capacity) : pairs_(capacity) {}
  void add(const String& key, Ref<const Object> value) {
    if (value) pairs_.set(Ref<const String>::retain(&key), std::move(value));
  }
  std::size_t size() const noexcept { return pairs_.size(); }
  Ref<Dictionary> build() { return Dictionary::make(std::move(pairs_)); }

 private:
  Dictionary::Pairs pairs_;
};

// object as a T, borrowed; null where it is null or of another kind.
template <class T>
const T* as(const Object* object) noexcept {
  const bool isOne = object != nullptr && object->typeID() == T::kType;
  return isOne ? static_cast<const T*>(object) : nullptr;
}

template <class T>
const T* Dictionary::valueAs(const String& key) const noexcept {
  return as<T>(value(key));
}

}  // namespace ob
