// The front end against answers that no image can bring about: failing copies, values of another
// kind, errors without description. What an image can show stands in the .t files beside this one.
#include <gmock/gmock.h>

#include <initializer_list>
#include <utility>

#include "cli/main.hpp"
#include "cli/reports.hpp"
#include "cli/state.hpp"
#include "runtime/c_bridge.hpp"
#include "runtime/error.hpp"
#include "runtime/values.hpp"
#include "tests/cli/fake_library.hpp"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Value = ob::Ref<const ob::Object>;
using Pairs = std::initializer_list<std::pair<const char*, Value>>;

Value text(std::string_view value) {
  return ob::String::make(value);
}
Value boolean(bool value) {
  return Value::retain(ob::Boolean::of(value));
}
Value error(std::string_view domain) {
  return ob::make<ob::Error>(ob::String::make(domain), 0x08000003, nullptr);
}

Value dictionary(Pairs pairs) {
  ob::DictionaryBuilder builder(pairs.size());
  for (const auto& [key, value] : pairs) builder.add(*ob::String::make(key), value);
  return builder.build();
}

ob::Ref<const ob::Array> array(std::initializer_list<Value> values) {
  return ob::Array::make(values);
}

// A handle with an identifier and perhaps other properties, and a name for the log.
Value path(std::string_view name, std::string_view identifier) {
  return dictionary(
      {{"name", text(name)},
       {"properties", dictionary({{"Logical Unit Path Identifier", text(identifier)}})}});
}
Value unit(std::string_view name, std::string_view identifier,
           std::initializer_list<Value> paths = {}) {
  return dictionary({{"name", text(name)},
                     {"properties", dictionary({{"Logical Unit Identifier", text(identifier)}})},
                     {"paths", array(paths)}});
}
const Value brokenHandle = dictionary({{"name", text("broken")}});

class FrontEnd : public testing::Test {
 protected:
  FrontEnd() {
    fake = {};
    tavrenix::cli::gRowNumber = 1;
    user = 0;
    timesAsked = 0;
  }

  // Runs the tool and returns what it printed.
  std::string run(std::vector<std::string> words) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    status = tavrenixMain(static_cast<int>(words.size()), argv.data(), [] {
      ++timesAsked;
      return user;
    });
    diagnostics = testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout();
  }
  // What a printer prints of an element.
  std::string print(void (*printer)(ObTypeRef, void*), const Value& element,
                    const char* identifier = nullptr) {
    testing::internal::CaptureStdout();
    printer(ob::toC<ObTypeRef>(element.get()), const_cast<char*>(identifier));
    return testing::internal::GetCapturedStdout();
  }

  static inline std::uint32_t user;
  static inline int timesAsked;
  int status = -1;
  std::string diagnostics;
};

TEST_F(FrontEnd, AsksForTheUserOnlyOnceThereIsSomethingToDo) {
  user = 1000;
  EXPECT_THAT(run({"tavrenix"}), StartsWith("tavrenix\nUtility"));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(timesAsked, 0);

  EXPECT_EQ(run({"/usr/sbin/tavrenix", "list"}), "");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(diagnostics, "'tavrenix' must be run as root...\n");
  run({"/opt/other//", "list"});
  EXPECT_EQ(diagnostics, "'other' must be run as root...\n");
  run({});
  EXPECT_EQ(status, 1);

  user = 0;
  EXPECT_EQ(run({}), "");
  EXPECT_EQ(status, 0);
  EXPECT_THAT(fake.calls, IsEmpty()) << "none of these may cause a scan";
}

TEST_F(FrontEnd, SaysNothingWithoutTheLibrarysAnswer) {
  for (const char* verb : {"list", "info", "modify", "frobnicate"}) {
    EXPECT_EQ(run({"tavrenix", verb}), "") << verb;
    EXPECT_EQ(status, 0);
  }
}

TEST_F(FrontEnd, PassesOverHandlesWithoutProperties) {
  fake.units = array({brokenHandle, unit("first", "A"), brokenHandle, unit("second", "B")});
  const std::string report = run({"tavrenix", "list"});
  EXPECT_THAT(report, HasSubstr("\n  1 No Alias"));
  EXPECT_THAT(report, HasSubstr("\n  2 No Alias"));
  EXPECT_THAT(report, Not(HasSubstr("\n  3")));
  EXPECT_EQ(fake.units->retainCount(), 1U) << "the copied array must be released";
}

TEST_F(FrontEnd, ShowsTheLaterOfTwoPathsAndUnits) {
  fake.units =
      array({unit("earlier unit", "A", {path("wrong", "P")}),
             unit("later unit", "A", {path("earlier", "P"), path("later", "P"), brokenHandle})});
  EXPECT_EQ(run({"tavrenix", "modify", "path", "-l", "A", "-i", "P", "-d"}), "");
  EXPECT_EQ(run({"tavrenix", "modify", "lun", "-i", "A", "-b", "4294967295", "-a", "LeastBytes"}),
            "");
  EXPECT_THAT(fake.calls, ElementsAre("CopyLogicalUnits", "Disable later", "CopyLogicalUnits",
                                      "SetAlgorithm later unit Logical Unit Algorithm Least Bytes",
                                      "SetBatchCount later unit 4294967295"));
}

TEST_F(FrontEnd, FindsNothingUnderAnIdentifierThatIsAbsent) {
  fake.units = array({dictionary({{"name", text("nameless")}, {"properties", dictionary({})}})});
  EXPECT_EQ(run({"tavrenix", "modify", "lun", "-i", "", "-b", "1"}), "Unable to find lun \n");
  EXPECT_EQ(run({"tavrenix", "info", "-i", "A"}), "Cannot locate lun with id A\n");
  EXPECT_THAT(fake.calls, Each(Eq("CopyLogicalUnits")));
}

TEST_F(FrontEnd, CutsIdentifiersAt255Characters) {
  fake.units = array({});
  const std::string shown(255, 'A');
  EXPECT_EQ(run({"tavrenix", "modify", "lun", "-b", "1", "-i", shown + std::string(300, 'B')}),
            "Unable to find lun " + shown + "\n");
}

TEST_F(FrontEnd, TellsPathRefusalsInThreeForms) {
  fake.units = array({unit("unit", "A", {path("path", "P")})});
  // Something that is no error has no description.
  for (const auto& [given, told] :
       {std::pair<Value, const char*>{error("Why"), ": Why (error 0x08000003)\n"},
        {text("no error"), ": reason unknown\n"},
        {nullptr, "\n"}}) {
    fake.answers = {{false, given}, {false, given}};
    EXPECT_EQ(run({"tavrenix", "modify", "path", "-l", "A", "-i", "P", "-e"}),
              std::string("Unable to enable path") + told);
    EXPECT_EQ(run({"tavrenix", "modify", "path", "-l", "A", "-i", "P", "-d"}),
              std::string("Unable to disable path") + told);
    EXPECT_EQ(status, 0);
  }
}

TEST_F(FrontEnd, TellsUnitRefusalsInTwoForms) {
  fake.units = array({unit("unit", "A")});
  const std::vector<std::string> both = {"tavrenix", "modify",  "lun", "-i", "A",
                                         "-a",       "LeastIO", "-b",  "3"};
  const std::string unknown =
      "Unable to change algorithm: reason unknown\nUnable to change batch count: reason unknown\n";
  fake.answers = {{false, nullptr}, {false, nullptr}};
  EXPECT_EQ(run(both), unknown);
  fake.answers = {{false, text("no error")}, {false, text("no error")}};
  EXPECT_EQ(run(both), unknown);
}

TEST_F(FrontEnd, ReleasesBothErrorsOfOneSlot) {
  fake.units = array({unit("unit", "A")});
  const Value first = error("First"), second = error("Second\n");
  fake.answers = {{false, first}, {false, second}};
  EXPECT_EQ(run({"tavrenix", "modify", "lun", "-i", "A", "-a", "LeastIO", "-b", "3"}),
            "Unable to change algorithm: First (error 0x08000003)\n"
            "Unable to batch count: Second? (error 0x08000003)\n");
  EXPECT_EQ(first->retainCount(), 1U);
  EXPECT_EQ(second->retainCount(), 1U);
}

TEST_F(FrontEnd, CutsDescriptionsAt254Characters) {
  fake.units = array({unit("unit", "A")});
  std::string domain;
  for (int i = 0; i < 300; ++i) domain += "é";
  fake.answers = {{false, error(domain)}};
  EXPECT_EQ(run({"tavrenix", "modify", "lun", "-i", "A", "-a", "LeastIO"}),
            "Unable to change algorithm: " + std::string(254, '?') + "\n");
}

TEST_F(FrontEnd, ShowsOnlyKnownAlgorithms) {
  const auto shown = [this](Value algorithm) {
    const Value handle = dictionary(
        {{"properties", dictionary({{"Logical Unit Algorithm", std::move(algorithm)}})}});
    return print(tavrenix::cli::printLogicalUnitRow, handle);
  };
  shown(nullptr);  // carries the header
  EXPECT_THAT(shown(text("Logical Unit Algorithm Least Bytes")),
              EndsWith(" Least Bytes           \n"));
  for (const Value& other : {text("logical unit algorithm least bytes"), text("Least Bytes"),
                             Value(ob::Number::make(std::int64_t{4}))}) {
    EXPECT_THAT(shown(other), EndsWith(std::string(36 + 23, ' ') + "\n"));
  }
}

TEST_F(FrontEnd, OnlyTheFalseBooleanDisablesAPath) {
  const auto shown = [this](Value enabled, Value state) {
    const Value handle =
        dictionary({{"properties", dictionary({{"Logical Unit Path Enabled", std::move(enabled)},
                                               {"Logical Unit Path State", std::move(state)}})}});
    return print(tavrenix::cli::printPathRow, handle).substr(0, 25);
  };
  EXPECT_EQ(shown(boolean(false), text("Standby")), "    Disabled             ");
  EXPECT_EQ(shown(boolean(false), nullptr), "    Disabled             ");
  EXPECT_EQ(shown(boolean(true), text("Standby")), "    Standby              ");
  EXPECT_EQ(shown(nullptr, text("Active Non-Optimized")), "    Active Non-Optimized ");
  EXPECT_EQ(shown(ob::Number::make(std::int64_t{0}), text("Standby")), "    Standby              ");
  EXPECT_EQ(shown(boolean(true), boolean(true)), std::string(25, ' '));
}

TEST_F(FrontEnd, SizesThatAreNoWholeNumbersAreBlank) {
  const auto shown = [this](Value size) {
    return print(tavrenix::cli::printVolumeRow,
                 dictionary({{"Logical Unit Volume Name", text("V")},
                             {"Logical Unit Volume Size", std::move(size)}}));
  };
  const std::string head = std::string(20, ' ') + "V" + std::string(39, ' ');
  EXPECT_EQ(shown(ob::Number::make(1.5e9)), head + "   1.5 GB (1500000000 Bytes)    \n");
  // Rounded up, although only just.
  EXPECT_EQ(shown(ob::Number::make(1.05e9)), head + "   1.1 GB (1050000000 Bytes)    \n");
  EXPECT_EQ(shown(ob::Number::make(1.05e12)), head + "   1.1 TB (1050000000000 Bytes) \n");
  for (const Value& none :
       {Value(), text("1500000000"), Value(ob::Number::make(0.5)), Value(ob::Number::make(1e19)),
        Value(ob::Number::make(~std::uint64_t{0}))}) {
    EXPECT_EQ(shown(none), head + std::string(32, ' ') + "\n");
  }
}

TEST_F(FrontEnd, LeavesOutSectionsOnlyWhereTheyAreAbsent) {
  fake.units =
      array({dictionary({{"properties", dictionary({{"Logical Unit Identifier", text("A")}})}})});
  const std::string withoutAny = run({"tavrenix", "info", "-i", "A"});
  EXPECT_THAT(
      withoutAny,
      EndsWith("\n\n    Access State         Path Identifier                Interface       \n\n"));

  fake.units =
      array({dictionary({{"properties", dictionary({{"Logical Unit Identifier", text("A")},
                                                    {"Logical Unit Volumes Dictionary Array",
                                                     array({dictionary({})})}})}})});
  const std::string volumesOnly = run({"tavrenix", "info", "-i", "A"});
  EXPECT_THAT(volumesOnly,
              HasSubstr("Interface       \n\n    Volumes:\n\n    BSD Name        Name "));
  EXPECT_THAT(volumesOnly, EndsWith("\n" + std::string(4 + 15 + 1 + 40 + 32, ' ') + "\n\n"));
}

TEST_F(FrontEnd, PrintersFilterAndPassOverNothing) {
  EXPECT_EQ(print(tavrenix::cli::printPathRow, path("path", "P"), "p"), "");
  EXPECT_THAT(print(tavrenix::cli::printPathRow, path("path", "P"), "P"), HasSubstr(" P "));
  EXPECT_EQ(print(tavrenix::cli::printLogicalUnitVolumes, unit("unit", "A"), "B"), "");
  for (const auto printer :
       {tavrenix::cli::printLogicalUnitRow, tavrenix::cli::printLogicalUnitPaths,
        tavrenix::cli::printPathRow, tavrenix::cli::printLogicalUnitVolumes,
        tavrenix::cli::printVolumeRow}) {
    EXPECT_EQ(print(printer, nullptr), "");
  }
}

}  // namespace
