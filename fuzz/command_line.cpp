// Command lines, a word a line: whatever is typed, the tool ends with a status and a text that it
// is known for, and asks the driver for nothing but what a driver knows.
#include <strings.h>

#include <algorithm>

#include "fuzz/front_end.hpp"
#include "fuzz/promise.hpp"
#include "model/registry_names.hpp"
#include "tests/support/library_host.hpp"

using namespace tavrenix;
using fuzz::expect;

namespace {

constexpr std::size_t kMostWords = 64;

bool isAlgorithmRequest(const ob::Dictionary& request) {
  const auto* algorithm = request.valueAs<ob::String>(registry::kAlgorithm);
  const auto* count = request.valueAs<ob::Number>(registry::kBatchCount);
  if (request.pairs().size() != 2 || algorithm == nullptr || count == nullptr) return false;
  const bool known = algorithm->equals(registry::kLeastBytes) ||
                     algorithm->equals(registry::kLeastQueueDepth) ||
                     algorithm->equals(registry::kModifiedRoundRobin);
  return known && count->asUInt64() >= 1U && count->asUInt64() <= UINT32_MAX;
}

bool isPathRequest(const ob::Dictionary& request) {
  const auto* states = request.valueAs<ob::Dictionary>(registry::kPathState);
  if (request.pairs().size() != 1 || states == nullptr || states->pairs().size() != 1) return false;
  const auto* number = ob::as<ob::Number>((*states->pairs().begin()).second.get());
  const auto state = number == nullptr ? std::nullopt : number->asInt64();
  return state == registry::kMPIOPathStateRequestEnable ||
         state == registry::kMPIOPathStateRequestDisable;
}

struct Driver {
  std::size_t requests = 0;
  KernelStatus answer = kSuccess;

  KernelStatus take(const ob::String& name, const ob::Object& value) {
    ++requests;
    const auto* request = ob::as<ob::Dictionary>(&value);
    expect(name.equals(registry::kProperties) && request != nullptr &&
               (isAlgorithmRequest(*request) || isPathRequest(*request)),
           "a request is one that a driver knows");
    return answer;
  }
};

bool hasWord(const std::vector<std::string>& words, const char* word) {
  return std::any_of(words.begin(), words.end(),
                     [&](const std::string& one) { return ::strcasecmp(one.c_str(), word) == 0; });
}

// The text is the usage or begins as one of the messages or reports does.
bool isKnown(std::string_view output) {
  constexpr std::string_view kBeginnings[] = {"tavrenix\nUtility to manage multiple paths",
                                              "    Alias",
                                              "Cannot locate lun with id ",
                                              "Unable to find lun ",
                                              "Unable to find path ",
                                              "Unable to change algorithm: ",
                                              "Unable to batch count: ",
                                              "Unable to change batch count: ",
                                              "Unable to enable path",
                                              "Unable to disable path",
                                              "Specified --batchCount is out of range"};
  return output.empty() ||
         std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                     [&](std::string_view one) { return output.starts_with(one); });
}

std::vector<std::string> wordsOf(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty() && words.size() < kMostWords) {
    words.emplace_back(fuzz::takeUpTo('\n', text));
    words.back().resize(std::min(words.back().size(), words.back().find('\0')));
  }
  return words;
}

}  // namespace

// The first byte decides what the driver answers to requests.
void tavrenix::fuzz::run(std::string_view input) {
  if (input.empty()) return;
  const test::LibraryHost host;
  Driver driver{0, input[0] % 2 == 0 ? kSuccess : -536870206};
  host->memory.registry().setWriteHandler(
      [&](EntryID, const ob::String& name, const ob::Object& value) {
        return driver.take(name, value);
      });
  test::addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1});

  const auto words = wordsOf(input.substr(1));
  const fuzz::Ran ran = fuzz::runFrontEnd(words);
  expect(ran.status == (words.empty() ? 1 : 0), "only a call without words ends with status 1");
  expect(isKnown(ran.output), "the tool says nothing but what it is known for");
  expect(driver.requests <= 2, "a command asks the driver for two things at the most");
  expect(driver.requests == 0 || hasWord(words, "modify"), "only modify asks for changes");
  expect(host->memory.registry().openHandles() == 0, "no handle stays open");
  if (words.size() == 1 && hasWord(words, "list")) fuzz::expectReport(ran.output);
}
