// Storage of any shape behind the library: entries of any class under any parents, with properties
// of every wrong kind, as input bytes say.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "model/memory/host.hpp"

namespace tavrenix::fuzz {

class AnyStorage {
 public:
  AnyStorage(memory::MemoryHost& host, FuzzedDataProvider& input) : host_(host), input_(input) {}

  // Adds entries, parents before children.
  void addEntries();
  // Changes or removes some of them.
  void changeEntries();

 private:
  ob::Ref<const ob::Dictionary> properties();
  void describe(EntryID id);

  memory::MemoryHost& host_;
  FuzzedDataProvider& input_;
  std::vector<EntryID> entries_;
};

}  // namespace tavrenix::fuzz
