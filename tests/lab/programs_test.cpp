// The programs of the folder as a person runs them. What tavrenix-lab shows of an image, and what a
// `modify` does to it, stands in tests/cli/.
#include <map>

#include "lab/image.hpp"
#include "tests/lab/programs.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

struct Program {
  std::string name;
  std::string path;
  bool isSimulation = true;
};
const Program kLab{"tavrenix-lab", TAVRENIX_LAB};
const Program kWatch{"tavrenix-lab-watch", TAVRENIX_LAB_WATCH};
const Program kGenerate{"tavrenix-lab-generate", TAVRENIX_LAB_GENERATE, false};

Outcome start(const Program& program, const std::string& arguments) {
  return run("'" + program.path + "' " + arguments);
}

TEST(Programs, ExplainThemselvesAndTellWhereThatDidNotArrive) {
  for (const Program& program : {kLab, kWatch, kGenerate}) {
    SCOPED_TRACE(program.name);
    const Outcome help = start(program, "--help 2> /dev/null");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("usage: " + program.name), std::string::npos);
    EXPECT_EQ(help.output.find("This is a simulation") != std::string::npos, program.isSimulation);
    EXPECT_EQ(start(program, "-h").output, help.output);
    EXPECT_EQ(start(program, "--version").output, program.name + " 0.1.0\n");
    for (const char* arguments : {"--help", "--version"}) {
      EXPECT_EQ(start(program, std::string(arguments) + " > /dev/full").status, 1) << arguments;
    }
    const Outcome none = start(program, "2>&1 > /dev/null");  // leaves the error stream alone
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.output, help.output);
  }
}

TEST(Programs, RefuseABadLineInOneLine) {
  const Scratch scratch;
  const std::string bad = scratch.write("bad.json", R"({"generation": 1})");
  const std::string none = scratch.path("none.json");
  const std::tuple<Program, std::string, std::string> refusals[] = {
      {kLab, "--frobnicate", "unknown option --frobnicate; see tavrenix-lab --help"},
      {kWatch, "--follow", "unknown option --follow; see tavrenix-lab-watch --help"},
      {kLab, "'" + bad + "' list", bad + ": top level: the key \"entries\" is missing"},
      {kWatch, "'" + bad + "'", bad + ": top level: the key \"entries\" is missing"},
      {kLab, "'" + none + "' list", none + ": cannot be opened: No such file or directory"},
      {kGenerate, "x 1", "UNITS must be a number from 0 to 1000000"},
      {kGenerate, "1000001 1", "UNITS must be a number from 0 to 1000000"},
      {kGenerate, "1 -1", "PATHS must be a number from 0 to 10000"},
      {kGenerate, "1 1 1.5", "VOLUMES must be a number from 0 to 10000"},
      {kGenerate, "1000000 10000 10000", "an image has at most 2000000 entries"},
  };
  for (const auto& [program, arguments, line] : refusals) {
    const Outcome outcome = start(program, arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.output, program.name + ": " + line + "\n");
  }
  EXPECT_EQ(contentsOf(bad), R"({"generation": 1})");
  const std::pair<Program, const char*> unclear[] = {
      {kWatch, "one.json two.json"}, {kWatch, "''"}, {kGenerate, "1"}, {kGenerate, "1 2 3 4"}};
  for (const auto& [program, arguments] : unclear) {
    const Outcome refused = start(program, arguments);
    EXPECT_EQ(refused.status, 2) << arguments;
    EXPECT_EQ(refused.output, start(program, "--help").output) << arguments;
  }
}

TEST(Generate, PrintsTheSameImageEveryTimeAndAsManyAsAskedFor) {
  for (const auto& [units, paths, volumes] : std::initializer_list<std::array<std::size_t, 3>>{
           {0, 0, 0}, {1, 0, 0}, {3, 2, 0}, {2, 300, 4}, {5, 4, 3}}) {
    const std::string arguments =
        std::to_string(units) + " " + std::to_string(paths) + " " + std::to_string(volumes);
    SCOPED_TRACE(arguments);
    const Outcome first = start(kGenerate, arguments);
    EXPECT_EQ(start(kGenerate, arguments).output, first.output);
    const Image image = Image::parse(first.output);
    std::map<std::string, std::size_t> entries;
    std::size_t parents = 0;
    for (const ImageEntry& entry : image.entries()) {
      ++entries[entry.className];
      if (entry.className == "KsSCSIMultipathedLogicalUnit") parents += entry.parents.size();
    }
    EXPECT_EQ(parents, units * paths);
    EXPECT_EQ(entries["KsSCSIMultipathedLogicalUnit"], units);
    EXPECT_EQ(entries["KsSCSIHierarchicalLogicalUnit"], units * paths);
    EXPECT_EQ(entries["KsMedia"], units * volumes);
  }
  EXPECT_EQ(start(kGenerate, "3 2").output, start(kGenerate, "3 2 1").output);
  EXPECT_EQ(start(kGenerate, "1000 4 > /dev/full").status, 1);
}

TEST(Lab, ShowsTheSampleOfEveryOddity) {
  const Outcome list = start(kLab, "'" TAVRENIX_SAMPLES "oddities.json' list");
  EXPECT_EQ(list.status, 0);
  for (const char* shown : {"No Alias", "(NULL)", "Volume Sizes", "First Twin", "Tape"}) {
    EXPECT_NE(list.output.find(shown), std::string::npos) << shown;
  }
  for (const char* hidden : {"Processor", "Controller", "\x1b", "\a"}) {
    EXPECT_EQ(list.output.find(hidden), std::string::npos) << hidden;
  }
}

}  // namespace
}  // namespace tavrenix::lab
