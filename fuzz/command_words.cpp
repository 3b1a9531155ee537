// Command lines. For any words, the tool ends with one of its known statuses and texts, and sends
// the driver only requests that a driver knows.
#include <strings.h>

#include <algorithm>

#include "fuzz/promise.hpp"
#include "host/registry_names.hpp"
#include "tests/session/client_session.hpp"

using namespace tavrenix;
using fuzz::expect;

namespace {

constexpr std::string_view kWords =
    "list info modify lun path --id -i --algorithm -a --batchCount -b --lun -l --enable -e "
    "--disable -d -- = RoundRobin LeastIO LeastBytes 600A0B80000000000000000000000000 "
    "600A0B80000000000000000000000001 0000 0001 4294967295";

bool isRequest(const ob::Dictionary& request) {
  const auto* count = request.valueAs<ob::Number>(registry::kBatchCount);
  const auto* states = request.valueAs<ob::Dictionary>(registry::kPathState);
  if (states != nullptr) return request.pairs().size() == 1 && states->pairs().size() == 1;
  return request.pairs().size() == 2 && count != nullptr && count->asUInt64() >= 1U &&
         count->asUInt64() <= UINT32_MAX && request.value(registry::kAlgorithm) != nullptr;
}

bool isKnown(std::string_view output) {
  constexpr std::string_view kBeginnings[] = {"tavrenix\nUtility to manage", "    Alias",
                                              "Cannot locate lun with id ", "Unable to ",
                                              "Specified --batchCount is out of range"};
  return output.empty() ||
         std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                     [&](std::string_view one) { return output.starts_with(one); });
}

std::vector<std::string> anyWords(test::Choices& choices) {
  std::vector<std::string> known, words;
  for (std::string_view rest = kWords; !rest.empty();)
    known.emplace_back(fuzz::takeUpTo(' ', rest));
  for (auto left = choices.below(12); left > 0; --left) {
    words.emplace_back(choices.onceIn(4) ? choices.bytes(40) : choices.oneOf(known));
    words.back().resize(std::min(words.back().size(), words.back().find('\0')));
  }
  return words;
}

}  // namespace

void tavrenix::fuzz::run(std::string_view input) {
  test::Choices choices(input);
  const KernelStatus answer = choices.onceIn(2) ? kSuccess : -16;
  std::size_t requests = 0;
  test::LibraryHost host;
  host->memory.registry().setWriteHandler(
      [&](EntryID, const ob::String& name, const ob::Object& value) {
        ++requests;
        const auto* request = ob::as<ob::Dictionary>(&value);
        expect(name.equals(registry::kProperties) && request != nullptr && isRequest(*request),
               "a request is one that a driver knows");
        return answer;
      });
  test::addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1});
  const auto words = anyWords(choices);
  const test::Output output = test::runCommand(words);
  expect(output.status == (words.empty() ? 1 : 0), "only a call without words has status 1");
  expect(isKnown(output.text), "the tool prints only what it is known for");
  const bool isModify = std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return ::strcasecmp(word.c_str(), "modify") == 0;
  });
  expect(requests <= (isModify ? 2 : 0), "only modify writes, and twice at most");
  expect(host->memory.registry().openHandles() == 0, "no handle stays open");
  if (words.size() == 1 && ::strcasecmp(words[0].c_str(), "list") == 0)
    test::expectReport(output.text);
}
