// What the options of the changing commands ask for. Where they ask for nothing that can be done,
// the readers have told the user so, and return nothing.
#pragma once

#include <tavrenix/mpio.h>

#include <array>
#include <cstdint>
#include <optional>

#include "cli/options.hpp"

namespace tavrenix::cli {

/// Zero-terminated text.
using Identifier = std::array<char, 256>;

struct LunRequest {
  Identifier unit{};
  const ObStringRef* algorithm = nullptr;   // NULL: not to be changed
  std::optional<std::uint32_t> batchCount;  // none: not to be changed
};

std::optional<LunRequest> readLunRequest(const Arguments& arguments);

struct PathRequest {
  std::optional<Identifier> unit;
  std::optional<Identifier> path;
  bool enable = false;  // exactly one of the two once the request has been read
  bool disable = false;
};

std::optional<PathRequest> readPathRequest(const Arguments& arguments);

}  // namespace tavrenix::cli
