// The properties of entries, under the registry's names.
#pragma once

#include "linux/machine.hpp"
#include "runtime/collections.hpp"

namespace tavrenix::sys {

// None where the entry is gone.
ob::Ref<const ob::Dictionary> propertiesOf(Machine& machine, EntryID id);

// One of them, without reading the others where that saves something. None where the entry lacks
// it.
ob::Ref<const ob::Object> propertyOf(Machine& machine, EntryID id, const ob::String& name);

// The identifier of a path, as bytes and as the text that requests name it by.
std::vector<std::uint8_t> identifierOfPath(Machine& machine, EntryID path);
std::string textOfIdentifier(const std::vector<std::uint8_t>& bytes);

}  // namespace tavrenix::sys
