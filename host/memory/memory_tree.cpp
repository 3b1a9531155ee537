#include "host/memory/memory_tree.hpp"

#include <deque>
#include <utility>

#include "host/registry_names.hpp"

namespace tavrenix::memory {

bool RegistryClass::derivesFrom(std::string_view className) const noexcept {
  for (const RegistryClass* at = this; at != nullptr; at = at->base) {
    if (at->name == className) return true;
  }
  return false;
}

Tree::Tree() {
  const std::string root(registry::kServiceClass);
  classes_[root] = std::make_unique<RegistryClass>(RegistryClass{root, nullptr});
}

const RegistryClass* Tree::findClass(std::string_view name) const {
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : found->second.get();
}

const RegistryClass& Tree::classNamed(const std::string& name) {
  auto& known = classes_[name];
  if (!known) {
    const RegistryClass* root = findClass(registry::kServiceClass);
    known = std::make_unique<RegistryClass>(RegistryClass{name, root});
  }
  return *known;
}

bool Tree::defineClass(const std::string& className, const std::string& base) {
  const RegistryClass& itsBase = classNamed(base);
  if (className == registry::kServiceClass || itsBase.derivesFrom(className)) return false;
  classNamed(className);
  RegistryClass& defined = *classes_[className];
  const bool hasOther = defined.base->base != nullptr && defined.base != &itsBase;
  if (!hasOther) defined.base = &itsBase;
  return !hasOther;
}

const Node* Tree::add(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                      ob::Ref<const ob::Dictionary> properties) {
  if (nodes_.contains(id)) return nullptr;
  auto node = std::make_unique<Node>();
  node->id = id;
  node->itsClass = &classNamed(className);
  node->properties = std::move(properties);
  Node* added = node.get();
  if (!setParents(*added, parents)) return nullptr;
  nodes_.set(id, std::move(node));
  return added;
}

bool Tree::setParents(Node& node, const std::vector<EntryID>& parents) {
  ob::NumberMap<Node*> wanted;
  for (const EntryID parent : parents) {
    Node* known = find(parent);
    if (known == nullptr) return false;
    wanted.set(parent, known);
  }
  for (const auto& [id, parent] : wanted) parent->children.set(node.id, &node);
  for (const auto& [id, parent] : node.parents) {
    if (!wanted.contains(id)) parent->children.erase(node.id);
  }
  node.parents = std::move(wanted);
  return true;
}

bool Tree::remove(EntryID id) {
  const Node* known = find(id);
  if (known == nullptr) return false;
  for (const auto& [parentID, parent] : known->parents) parent->children.erase(id);
  for (const auto& [childID, child] : known->children) child->parents.erase(id);
  nodes_.erase(id);
  return true;
}

Node* Tree::find(EntryID id) const noexcept {
  const auto* known = nodes_.find(id);
  return known == nullptr ? nullptr : known->get();
}

std::vector<const Node*> Tree::ofClass(std::string_view className) const {
  std::vector<const Node*> found;
  for (const auto& [id, node] : nodes_) {
    if (node->itsClass->derivesFrom(className)) found.push_back(node.get());
  }
  return found;
}

// Does not recurse, so a deep tree costs no stack.
std::vector<const Node*> Tree::relatives(Node& node, std::uint32_t options) {
  const bool recursively = (options & kIterateRecursively) != 0;
  const bool upwards = (options & kIterateParents) != 0;
  node.visited = ++walk_;
  std::vector<const Node*> found;
  // A queue for parents makes the walk level by level; a stack for children makes it depth first.
  std::deque<Node*> pending;
  const auto addNeighbours = [&](const Node& of) {
    const auto end = upwards ? pending.end() : pending.begin();
    const auto& neighbours = upwards ? of.parents : of.children;
    std::vector<Node*> added;
    for (const auto& [id, neighbour] : neighbours) added.push_back(neighbour);
    pending.insert(end, added.begin(), added.end());
  };
  addNeighbours(node);
  while (!pending.empty()) {
    Node* next = pending.front();
    pending.pop_front();
    if (std::exchange(next->visited, walk_) == walk_) continue;
    found.push_back(next);
    if (recursively) addNeighbours(*next);
  }
  return found;
}

}  // namespace tavrenix::memory
