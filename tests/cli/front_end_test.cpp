// The command on a library with fixed answers, for cases that no image can cause: properties that
// cannot be copied, changes that fail without an error, and errors without a description.
#include <gtest/gtest.h>
#include <tavrenix/mpio.h>

#include <deque>

#include "cli/command.hpp"
#include "runtime/c/c_bridge.hpp"
#include "runtime/values.hpp"

namespace {

using Value = ob::Ref<const ob::Object>;

Value dictionary(const char* key, const char* value) {
  ob::DictionaryBuilder builder(1);
  builder.add(*ob::String::make(key), ob::String::make(value));
  return builder.build();
}
// A handle is the dictionary of its properties. From any other value, none can be copied.
const Value kBroken = ob::String::make("broken");
const auto kUnits = ob::Array::make({kBroken, dictionary("Logical Unit Identifier", "A"), kBroken});
const auto kPaths =
    ob::Array::make({kBroken, dictionary("Logical Unit Path Identifier", "P"), kBroken});
std::deque<Value> gErrors;  // of the coming changes, which all fail

template <class CRef>
CRef copy(const ob::Object* object) {
  return static_cast<CRef>(ObRetain(object));
}
bool refuse(ObErrorRef* error) {
  const Value given = gErrors.front();
  gErrors.pop_front();
  if (given) *error = copy<ObErrorRef>(given.get());
  return false;
}

}  // namespace

extern "C" {
ObArrayRef MPIOCopyLogicalUnits(void) {
  return copy<ObArrayRef>(kUnits.get());
}
ObDictionaryRef MPIOLogicalUnitCopyProperties(MPIOLogicalUnitRef unit) {
  return copy<ObDictionaryRef>(ob::fromC<ob::Dictionary>(unit));
}
ObArrayRef MPIOLogicalUnitCopyPaths(MPIOLogicalUnitRef) {
  return copy<ObArrayRef>(kPaths.get());
}
ObDictionaryRef MPIOLogicalUnitPathCopyProperties(MPIOLogicalUnitPathRef path) {
  return copy<ObDictionaryRef>(ob::fromC<ob::Dictionary>(path));
}
bool MPIOLogicalUnitPathEnable(MPIOLogicalUnitPathRef, ObErrorRef* error) {
  return refuse(error);
}
bool MPIOLogicalUnitPathDisable(MPIOLogicalUnitPathRef, ObErrorRef* error) {
  return refuse(error);
}
bool MPIOLogicalUnitSetAlgorithm(MPIOLogicalUnitRef, ObStringRef, ObErrorRef* error) {
  return refuse(error);
}
bool MPIOLogicalUnitSetBatchCount(MPIOLogicalUnitRef, uint32_t, ObErrorRef* error) {
  return refuse(error);
}
}  // extern "C"

namespace {

// Runs the command as the superuser and returns what it printed.
std::string run(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  testing::internal::CaptureStdout();
  tavrenixMain(static_cast<int>(words.size()), argv.data(), [] { return 0U; });
  return testing::internal::GetCapturedStdout();
}

TEST(FrontEnd, SkipsHandlesWithoutProperties) {
  const std::string report = run({"tavrenix", "info", "-i", "A"});
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 6) << report;
  EXPECT_EQ(kUnits->retainCount(), 1U) << "the copied array must be released";
}

TEST(FrontEnd, ReportsFailuresWithAndWithoutDescription) {
  const auto error = [](const std::string& domain) {
    return ob::make<ob::Error>(ob::String::make(domain), 0x08000003, nullptr);
  };
  const Value none = ob::String::make("no error");
  const std::string algorithm = "Unable to change algorithm: ", unknown = "reason unknown\n";
  const std::string xs(253, 'x'), enable = "Unable to enable path";
  const std::vector<std::string> lun{"tavrenix", "modify",  "lun", "-i", "A",
                                     "-a",       "LeastIO", "-b",  "3"};
  const std::vector<std::string> path{"tavrenix", "modify", "path", "-l", "A", "-i", "P", "-e"};
  const std::tuple<std::vector<std::string>, Value, std::string> rows[] = {
      {lun, nullptr, algorithm + unknown + "Unable to change batch count: " + unknown},
      {lun, error(xs + "\u00E9\u00E9"), algorithm + xs + "?\nUnable to batch count: " + xs + "?\n"},
      {path, error("First\n"), enable + ": First? (error 0x08000003)\n"},
      {path, none, enable + ": " + unknown},
      {path, nullptr, enable + "\n"},
  };
  for (const auto& [words, given, printed] : rows) {
    gErrors = {given, given};
    EXPECT_EQ(run(words), printed);
  }
}

}  // namespace
