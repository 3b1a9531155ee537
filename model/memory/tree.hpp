// A tree of registry entries in memory: classes, entries, parents and children. Not safe for
// concurrent use; MemoryRegistry serialises it.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/registry.hpp"

namespace tavrenix::memory {

struct RegistryClass {
  std::string name;
  const RegistryClass* base;  // null for "KsService", the root of all
  bool conformsTo(std::string_view className) const noexcept;
};

class Entry;

// Entries beside one, in their order. Mostly there is one, which then needs no memory elsewhere: a
// walk over many entries waits for memory more than for anything.
class Relatives {
 public:
  std::span<Entry* const> all() const noexcept {
    if (!many_.empty()) return many_;
    return {&one_, one_ == nullptr ? 0U : 1U};
  }
  bool holds(const Entry* entry) const noexcept;
  void add(Entry* entry);
  void remove(const Entry* entry) noexcept;

 private:
  Entry* one_ = nullptr;  // none where many_ holds them
  std::vector<Entry*> many_;
};

// One entry. It outlives its place in the tree while a handle refers to it.
class Entry final : public ob::Object {
 public:
  Entry(EntryID entryID, const RegistryClass& entryClass,
        ob::Ref<const ob::Dictionary> itsProperties) noexcept
      : id(entryID), itsClass(entryClass), properties(std::move(itsProperties)) {}
  ob::TypeID typeID() const noexcept override { return ob::kNoType; }

  bool isInTree = false;
  const EntryID id;
  // Walks over all entries read these first, so they stand together.
  std::uint64_t visited = 0;  // the last walk that met this entry
  Relatives children;         // in the order of their arrival; all in the tree
  const RegistryClass& itsClass;
  ob::Ref<const ob::Dictionary> properties;
  Relatives parents;  // in the order given; all in the tree
};

using Entries = std::vector<ob::Ref<Entry>>;

class Tree {
 public:
  Tree();
  // Makes className derive from base; both become known. False where it would make a cycle or
  // className already has another base.
  bool defineClass(const std::string& className, const std::string& base);
  // Null where the ID is taken or a parent is not there.
  Entry* add(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
             ob::Ref<const ob::Dictionary> properties);
  // Puts the entry under these parents, as their last child where it is new to them. False, and
  // nothing changes, where one of them is not there.
  bool setParents(Entry& entry, const std::vector<EntryID>& parents);
  // Takes the entry out; its children stay, without it as a parent. Returns it, or none.
  ob::Ref<Entry> remove(EntryID id);

  Entry* find(EntryID id) const noexcept;
  // The next look-up will likely be of this entry, and needs no index then.
  void expect(Entry& entry) noexcept {
    if (entry.isInTree) expected_ = &entry;
  }
  Entries ofClass(std::string_view className) const;
  // The relatives of entry that options choose, nearest level first towards parents, depth first
  // towards children; each once, entry itself not.
  Entries relatives(Entry& entry, std::uint32_t options);

 private:
  const RegistryClass& classNamed(const std::string& name);
  void descend(Entry& entry, bool recursively, Entries& found) const;

  std::map<std::string, std::unique_ptr<RegistryClass>, std::less<>> classes_;
  ob::NumberMap<ob::Ref<Entry>> entries_;
  Entry* expected_ = nullptr;  // in the tree
  std::uint64_t walk_ = 0;
};

}  // namespace tavrenix::memory
