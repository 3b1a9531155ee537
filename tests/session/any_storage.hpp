// Storage of any shape: entries of any class under any parents, with properties of every kind, even
// wrong ones.
#pragma once

#include "host/memory/memory_host.hpp"
#include "tests/session/choices.hpp"

namespace tavrenix::test {

class AnyStorage {
 public:
  AnyStorage(memory::MemoryHost& host, Choices& choices);
  // Adds, changes or removes an entry.
  void change();

 private:
  ob::Ref<const ob::Dictionary> properties();
  void describe(EntryID id);

  memory::MemoryHost& host_;
  Choices& choices_;
  std::vector<EntryID> entries_;
};

}  // namespace tavrenix::test
