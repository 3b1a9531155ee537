#include "model/memory/tree.hpp"

#include <algorithm>

#include "model/registry_names.hpp"

namespace tavrenix::memory {

bool RegistryClass::conformsTo(std::string_view className) const noexcept {
  for (const RegistryClass* at = this; at != nullptr; at = at->base) {
    if (at->name == className) return true;
  }
  return false;
}

Tree::Tree() {
  const std::string root(registry::kServiceClass);
  classes_[root] = std::make_unique<RegistryClass>(RegistryClass{root, nullptr});
}

const RegistryClass& Tree::classNamed(const std::string& name) {
  auto& known = classes_[name];
  if (!known) {
    const RegistryClass* root = classes_.find(registry::kServiceClass)->second.get();
    known = std::make_unique<RegistryClass>(RegistryClass{name, root});
  }
  return *known;
}

bool Tree::defineClass(const std::string& className, const std::string& base) {
  const RegistryClass& itsBase = classNamed(base);
  if (className == registry::kServiceClass || itsBase.conformsTo(className)) return false;
  classNamed(className);
  RegistryClass& defined = *classes_[className];
  const bool hasOther = defined.base->base != nullptr && defined.base != &itsBase;
  if (!hasOther) defined.base = &itsBase;
  return !hasOther;
}

Entry* Tree::add(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                 ob::Ref<const ob::Dictionary> properties) {
  if (entries_.contains(id)) return nullptr;
  auto entry = ob::make<Entry>(id, classNamed(className), std::move(properties));
  entry->parents.reserve(parents.size());
  for (const EntryID parent : parents) {
    Entry* known = find(parent);
    if (known == nullptr) return nullptr;
    entry->parents.push_back(known);
  }
  for (Entry* parent : entry->parents) parent->children.push_back(entry.get());
  Entry* added = entry.get();
  entries_.set(id, std::move(entry));
  return added;
}

bool Tree::setParents(Entry& entry, const std::vector<EntryID>& parents) {
  std::vector<Entry*> wanted;
  for (const EntryID parent : parents) {
    wanted.push_back(find(parent));
    if (wanted.back() == nullptr) return false;
  }
  const auto holds = [](const std::vector<Entry*>& entries, const Entry* one) {
    return std::find(entries.begin(), entries.end(), one) != entries.end();
  };
  for (Entry* parent : wanted) {
    if (!holds(entry.parents, parent)) parent->children.push_back(&entry);
  }
  for (Entry* parent : entry.parents) {
    if (!holds(wanted, parent)) std::erase(parent->children, &entry);
  }
  entry.parents = std::move(wanted);
  return true;
}

ob::Ref<Entry> Tree::remove(EntryID id) {
  const auto* known = entries_.find(id);
  if (known == nullptr) return nullptr;
  ob::Ref<Entry> entry = *known;
  for (Entry* parent : entry->parents) std::erase(parent->children, entry.get());
  for (Entry* child : entry->children) std::erase(child->parents, entry.get());
  entry->parents.clear();
  entry->children.clear();
  entries_.erase(id);
  return entry;
}

Entry* Tree::find(EntryID id) const noexcept {
  const auto* known = entries_.find(id);
  return known == nullptr ? nullptr : known->get();
}

Entries Tree::ofClass(std::string_view className) const {
  Entries found;
  for (const auto& [id, entry] : entries_) {
    if (entry->itsClass.conformsTo(className)) found.push_back(entry);
  }
  return found;
}

Entries Tree::relatives(Entry& entry, std::uint32_t options) {
  Entries found;
  entry.visited = ++walk_;
  const bool recursively = (options & kIterateRecursively) != 0;
  if ((options & kIterateParents) == 0) {
    descend(entry, recursively, found);
    return found;
  }
  // Level by level: found is also the queue of those whose parents are still to be met.
  std::size_t done = 0;
  for (Entry* from = &entry; from != nullptr;) {
    for (Entry* parent : from->parents) {
      if (std::exchange(parent->visited, walk_) != walk_)
        found.push_back(ob::Ref<Entry>::retain(parent));
    }
    from = recursively && done < found.size() ? found[done++].get() : nullptr;
  }
  return found;
}

// Without recursion of its own, so that a deep tree costs no stack.
void Tree::descend(Entry& entry, bool recursively, Entries& found) const {
  std::vector<Entry*> pending(entry.children.rbegin(), entry.children.rend());
  while (!pending.empty()) {
    Entry* child = pending.back();
    pending.pop_back();
    if (std::exchange(child->visited, walk_) == walk_) continue;
    found.push_back(ob::Ref<Entry>::retain(child));
    if (recursively)
      pending.insert(pending.end(), child->children.rbegin(), child->children.rend());
  }
}

}  // namespace tavrenix::memory
