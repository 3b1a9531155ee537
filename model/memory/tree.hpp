// A tree of registry entries in memory: classes, entries, parents and children. Not safe for
// concurrent use; MemoryRegistry serialises it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/registry.hpp"

namespace tavrenix::memory {

struct RegistryClass {
  std::string name;
  const RegistryClass* base;  // null for "KsService", the root of all
  bool conformsTo(std::string_view className) const noexcept;
};

// One entry. It outlives its place in the tree while a handle refers to it.
class Entry final : public ob::Object {
 public:
  Entry(EntryID entryID, const RegistryClass& entryClass,
        ob::Ref<const ob::Dictionary> itsProperties) noexcept
      : id(entryID), itsClass(entryClass), properties(std::move(itsProperties)) {}
  ob::TypeID typeID() const noexcept override { return ob::kNoType; }

  const EntryID id;
  const RegistryClass& itsClass;
  ob::Ref<const ob::Dictionary> properties;
  std::vector<Entry*> parents;   // in the order given; all in the tree
  std::vector<Entry*> children;  // in the order of their arrival; all in the tree
  std::uint64_t visited = 0;     // the last walk that met this entry
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
  Entries ofClass(std::string_view className) const;
  // The relatives of entry that options choose, nearest level first towards parents, depth first
  // towards children; each once, entry itself not.
  Entries relatives(Entry& entry, std::uint32_t options);

 private:
  const RegistryClass& classNamed(const std::string& name);
  void descend(Entry& entry, bool recursively, Entries& found) const;

  std::map<std::string, std::unique_ptr<RegistryClass>, std::less<>> classes_;
  ob::NumberMap<ob::Ref<Entry>> entries_;
  std::uint64_t walk_ = 0;
};

}  // namespace tavrenix::memory
