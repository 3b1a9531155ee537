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

bool Relatives::holds(const Entry* entry) const noexcept {
  const auto entries = all();
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

void Relatives::add(Entry* entry) {
  if (all().empty()) {
    one_ = entry;
  } else if (!many_.empty()) {
    many_.push_back(entry);
  } else {
    many_ = {one_, entry};
    one_ = nullptr;
  }
}

void Relatives::remove(const Entry* entry) noexcept {
  if (one_ == entry) one_ = nullptr;
  std::erase(many_, entry);
}

Entry* Tree::add(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                 ob::Ref<const ob::Dictionary> properties) {
  if (entries_.contains(id)) return nullptr;
  auto entry = ob::make<Entry>(id, classNamed(className), std::move(properties));
  for (const EntryID parent : parents) {
    Entry* known = find(parent);
    if (known == nullptr) return nullptr;
    entry->parents.add(known);
  }
  for (Entry* parent : entry->parents.all()) parent->children.add(entry.get());
  Entry* added = entry.get();
  entries_.set(id, std::move(entry));
  added->isInTree = true;
  return added;
}

bool Tree::setParents(Entry& entry, const std::vector<EntryID>& parents) {
  Relatives wanted;
  for (const EntryID parent : parents) {
    Entry* known = find(parent);
    if (known == nullptr) return false;
    wanted.add(known);
  }
  for (Entry* parent : wanted.all()) {
    if (!entry.parents.holds(parent)) parent->children.add(&entry);
  }
  for (Entry* parent : entry.parents.all()) {
    if (!wanted.holds(parent)) parent->children.remove(&entry);
  }
  entry.parents = std::move(wanted);
  return true;
}

ob::Ref<Entry> Tree::remove(EntryID id) {
  const auto* known = entries_.find(id);
  if (known == nullptr) return nullptr;
  ob::Ref<Entry> entry = *known;
  for (Entry* parent : entry->parents.all()) parent->children.remove(entry.get());
  for (Entry* child : entry->children.all()) child->parents.remove(entry.get());
  entry->parents = {};
  entry->children = {};
  entry->isInTree = false;
  if (expected_ == entry.get()) expected_ = nullptr;
  entries_.erase(id);
  return entry;
}

Entry* Tree::find(EntryID id) const noexcept {
  if (expected_ != nullptr && expected_->id == id) return expected_;
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
    for (Entry* parent : from->parents.all()) {
      if (std::exchange(parent->visited, walk_) != walk_)
        found.push_back(ob::Ref<Entry>::retain(parent));
    }
    from = recursively && done < found.size() ? found[done++].get() : nullptr;
  }
  return found;
}

// Without recursion of its own, so that a deep tree costs no stack.
void Tree::descend(Entry& entry, bool recursively, Entries& found) const {
  std::vector<Entry*> pending;
  const auto addChildren = [&](const Entry& of) {
    const auto children = of.children.all();
    pending.insert(pending.end(), children.rbegin(), children.rend());
  };
  addChildren(entry);
  while (!pending.empty()) {
    Entry* child = pending.back();
    pending.pop_back();
    if (std::exchange(child->visited, walk_) == walk_) continue;
    found.push_back(ob::Ref<Entry>::retain(child));
    if (recursively) addChildren(*child);
  }
}

}  // namespace tavrenix::memory
