// The requests of the commands that change something, read from their options. If the options make
// no valid request, a reader prints what is wrong, or the usage, and returns nothing.
#pragma once

#include <tavrenix/mpio.h>

#include <array>
#include <cstdint>
#include <optional>

#include "cli/arguments.hpp"

namespace tavrenix::cli {

// Zero-terminated text.
using Identifier = std::array<char, 256>;

struct LunRequest {
  Identifier unit{};
  const ObStringRef* algorithm = nullptr;   // NULL if not to be changed
  std::optional<std::uint32_t> batchCount;  // empty if not to be changed
};

std::optional<LunRequest> readLunRequest(const Arguments& arguments);

struct PathRequest {
  std::optional<Identifier> unit;
  std::optional<Identifier> path;
  bool enable = false;  // a request has exactly one of the two
  bool disable = false;
};

std::optional<PathRequest> readPathRequest(const Arguments& arguments);

}  // namespace tavrenix::cli
