// Objects that hold other objects: array, dictionary and error. All are immutable.
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
  static std::size_t hash(const String& key) noexcept { return hashOf(key.view()); }
};

class Dictionary final : public Object {
 public:
  static constexpr TypeID kType = kDictionaryType;
  using Pairs = OrderedMap<Ref<const String>, Ref<const Object>, StringKeyTraits>;
  static Ref<Dictionary> make(Pairs pairs) { return ob::make<Dictionary>(std::move(pairs)); }
  explicit Dictionary(Pairs pairs) noexcept : pairs_(std::move(pairs)) {}
  const Pairs& pairs() const noexcept { return pairs_; }

  // Returns the value under the key, borrowed, or null if there is none.
  const Object* value(const String& key) const noexcept {
    const auto* found = pairs_.find(key);
    return found == nullptr ? nullptr : found->get();
  }
  // Returns the value under the key, borrowed, or null if it is absent or no T.
  template <class T>
  const T* valueAs(const String& key) const noexcept;

  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  Pairs pairs_;
};

// Collects the pairs of a new dictionary.
class DictionaryBuilder {
 public:
  explicit DictionaryBuilder(std::size_t capacity) : pairs_(capacity) {}
  // Adds the pair, or replaces the value under an equal key. Leaves absent values out, because a
  // report without the key is how the library says that it does not know a value.
  void add(const String& key, Ref<const Object> value) {
    if (value) pairs_.set(Ref<const String>::retain(&key), std::move(value));
  }
  std::size_t size() const noexcept { return pairs_.size(); }
  // Returns the dictionary. REQUIRES: no further call on this builder.
  Ref<Dictionary> build() { return Dictionary::make(std::move(pairs_)); }

 private:
  Dictionary::Pairs pairs_;
};

// Returns the object as a T, borrowed, or null if it is null or no T.
template <class T>
const T* as(const Object* object) noexcept {
  const bool isOne = object != nullptr && object->typeID() == T::kType;
  return isOne ? static_cast<const T*>(object) : nullptr;
}

template <class T>
const T* Dictionary::valueAs(const String& key) const noexcept {
  return as<T>(value(key));
}

class Error final : public Object {
 public:
  static constexpr TypeID kType = kErrorType;
  // The domain is the message. userInfo may be none.
  Error(Ref<const String> domain, std::int64_t code, Ref<const Dictionary> userInfo) noexcept
      : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}
  const String& domain() const noexcept { return *domain_; }
  std::int64_t code() const noexcept { return code_; }
  const Dictionary* userInfo() const noexcept { return userInfo_.get(); }

  // Returns one line for a person: the message, the code, and the first number of the user
  // information, if any.
  Ref<String> description() const;

  TypeID typeID() const noexcept override { return kType; }

 private:
  Ref<const String> domain_;
  std::int64_t code_;
  Ref<const Dictionary> userInfo_;
};

}  // namespace ob
