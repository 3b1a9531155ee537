// A tree of registry entries in memory: classes, entries, parents and children.
//
// Thread safety: none. MemoryRegistry guards its tree with a mutex.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/backing.hpp"

namespace tavrenix::memory {

struct RegistryClass {
  std::string name;
  const RegistryClass* base;  // null for "KsService", from which all others derive
  bool derivesFrom(std::string_view className) const noexcept;
};

struct Node {
  EntryID id = 0;
  const RegistryClass* itsClass = nullptr;
  ob::Ref<const ob::Dictionary> properties;
  ob::NumberMap<Node*> parents;   // by ID, in the order given
  ob::NumberMap<Node*> children;  // by ID, in the order of their arrival
  std::uint64_t visited = 0;      // number of the last walk that reached this node
};

class Tree {
 public:
  Tree();

  // Makes className derive from `base`. Adds both classes if they are new. Returns false if that
  // would make a cycle or className already derives from another class; the bases then stay as they
  // were.
  bool defineClass(const std::string& className, const std::string& base);
  // Returns the class of that name, made if it is new. The classes live as long as the tree.
  const RegistryClass& classNamed(const std::string& name);
  const RegistryClass* findClass(std::string_view name) const;

  // Adds a node and returns it. Returns null, and adds none, if the ID is taken or a parent is not
  // there.
  const Node* add(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                  ob::Ref<const ob::Dictionary> properties);
  // Removes the node. Its children stay, with one parent less. Returns false if it is not there.
  bool remove(EntryID id);
  // Puts the node under these parents, as the last child of those that are new. Returns false, and
  // changes nothing, if one of them is not there.
  bool setParents(Node& node, const std::vector<EntryID>& parents);

  Node* find(EntryID id) const noexcept;
  // Returns all nodes of the class or a derived class. They are in the order in which they were
  // added, until a node is removed.
  std::vector<const Node*> ofClass(std::string_view className) const;
  // Returns the relatives that the iteration options choose: parents level by level, children depth
  // first, each once, without the node itself.
  std::vector<const Node*> relatives(Node& node, std::uint32_t options);

 private:
  std::map<std::string, std::unique_ptr<RegistryClass>, std::less<>> classes_;
  ob::NumberMap<std::unique_ptr<Node>> nodes_;
  std::uint64_t walk_ = 0;
};

}  // namespace tavrenix::memory
