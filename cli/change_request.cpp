#include "cli/change_request.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tavrenix::cli {

namespace {

// Returns the argument, cut at 255 characters. No identifier has more than 254, so a cut one
// matches none.
Identifier identifierFrom(const char* argument) {
  Identifier identifier{};
  std::strncpy(identifier.data(), argument, identifier.size() - 1);
  return identifier;
}

// Returns the algorithm value of the word, or NULL for an unknown word.
const ObStringRef* algorithmFrom(const char* word) {
  struct Algorithm {
    const char* word;
    const ObStringRef* value;
  };
  static const Algorithm algorithms[] = {
      {"LeastIO", &kMPIOLogicalUnitAlgorithmLeastQueueDepth},
      {"LeastBytes", &kMPIOLogicalUnitAlgorithmLeastBytes},
      {"RoundRobin", &kMPIOLogicalUnitAlgorithmRoundRobin},
  };
  for (const Algorithm& algorithm : algorithms) {
    if (std::strcmp(word, algorithm.word) == 0) return algorithm.value;
  }
  return nullptr;
}

// Returns the number, or nothing if it is 0 or out of range. Fixed: only leading digits count, so
// "12abc" is 12 and "abc" is 0.
std::optional<std::uint32_t> batchCountFrom(const char* argument) {
  // strtoul would return UINT32_MAX for every larger number if long has 32 bits.
  const unsigned long long count = std::strtoull(argument, nullptr, 10);
  if (count == 0 || count > UINT32_MAX) return std::nullopt;
  return static_cast<std::uint32_t>(count);
}

}  // namespace

std::optional<LunRequest> readLunRequest(const Arguments& arguments) {
  LunRequest request;
  OptionReader options(arguments, kModifyLunOptions);
  for (int letter = options.next(); letter != -1; letter = options.next()) {
    if (letter == 'i') request.unit = identifierFrom(optarg);
    if (letter == 'a') {
      // Fixed: an unknown word is ignored, and an earlier choice stays.
      if (const ObStringRef* known = algorithmFrom(optarg)) request.algorithm = known;
    }
    if (letter == 'b') {
      request.batchCount = batchCountFrom(optarg);
      if (!request.batchCount) {
        // Fixed: the message includes 0 in the range, although 0 is refused.
        std::puts("Specified --batchCount is out of range 0 - 0xFFFFFFFF");
        printUsage();
        return std::nullopt;
      }
    }
  }
  if (request.algorithm == nullptr && !request.batchCount) {
    printUsage();
    return std::nullopt;
  }
  return request;
}

std::optional<PathRequest> readPathRequest(const Arguments& arguments) {
  PathRequest request;
  OptionReader options(arguments, kModifyPathOptions);
  for (int letter = options.next(); letter != -1; letter = options.next()) {
    if (letter == 'd') request.disable = true;
    if (letter == 'e') request.enable = true;
    if (letter == 'i') request.path = identifierFrom(optarg);
    if (letter == 'l') request.unit = identifierFrom(optarg);
  }
  if (request.enable == request.disable || !request.unit || !request.path) {
    printUsage();
    return std::nullopt;
  }
  return request;
}

}  // namespace tavrenix::cli
