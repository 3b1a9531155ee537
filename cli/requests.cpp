#include "cli/requests.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/usage.hpp"

namespace tavrenix::cli {

namespace {

// An identifier has 254 characters at most: one that is cut at 255 here can never match by mistake.
Identifier identifierFrom(const char* argument) {
  Identifier identifier{};
  std::strncpy(identifier.data(), argument, identifier.size() - 1);
  return identifier;
}

// NULL for an unknown word.
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

// Leading digits count, as ever with this option: "12abc" is 12 and "abc" is 0.
std::optional<std::uint32_t> batchCountFrom(const char* argument) {
  // Not strtoul: where long has 32 bits it would take every larger number for the largest.
  const unsigned long long count = std::strtoull(argument, nullptr, 10);
  if (count == 0 || count > UINT32_MAX) return std::nullopt;
  return static_cast<std::uint32_t>(count);
}

}  // namespace

std::optional<LunRequest> readLunRequest(const Arguments& arguments) {
  LunRequest request;
  OptionReader options(arguments, modifyLunOptions);
  for (int letter = options.next(); letter != -1; letter = options.next()) {
    if (letter == 'i') request.unit = identifierFrom(optarg);
    if (letter == 'a') {
      // An unknown word is passed over, and an earlier choice stays.
      if (const ObStringRef* known = algorithmFrom(optarg)) request.algorithm = known;
    }
    if (letter == 'b') {
      request.batchCount = batchCountFrom(optarg);
      if (!request.batchCount) {
        // The text gives 0 as the lower bound, although 0 is refused. Scripts know it so.
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
  OptionReader options(arguments, modifyPathOptions);
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
