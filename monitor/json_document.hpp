// The versioned JSON document: everything that is known, for programs. Its form is described by
// monitor/tavrenix-monitor.schema.json, which is installed.
#pragma once

#include <nlohmann/json.hpp>

#include "monitor/storage_facts.hpp"

namespace tavrenix::monitor {

using Json = nlohmann::ordered_json;

// A member is absent if its fact is not known. Counters are exact 64-bit numbers.
Json documentOfUnits(const Storage& storage, bool withPaths);

// The paths of all units in one list, each with its unit's identifier and device, in place of the
// units.
Json documentOfPaths(const Storage& storage);

// The document as ASCII text that ends in a newline: on one line, or indented.
std::string textOf(const Json& document, bool onOneLine);

}  // namespace tavrenix::monitor
