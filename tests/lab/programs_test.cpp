// The programs of the folder as a person runs them.
#include <memory>

#include "lab/image.hpp"
#include "tests/lab/programs.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

Outcome generate(const std::string& arguments) {
  return run("'" TAVRENIX_LAB_GENERATE "' " + arguments);
}

TEST(Generate, PrintsTheSameImageEveryTime) {
  for (const char* arguments : {"0 0", "0 0 0", "1 0", "3 2", "2 300 4", "20 4 0"}) {
    const Outcome first = generate(arguments);
    EXPECT_EQ(first.status, 0) << arguments;
    EXPECT_NO_THROW(Image::parse(first.output)) << arguments;
    EXPECT_EQ(generate(arguments).output, first.output) << arguments;
  }
}

TEST(Generate, PrintsAsManyAsAskedFor) {
  const Image image = Image::parse(generate("5 4 3").output);
  std::size_t units = 0;
  std::size_t paths = 0;
  std::size_t volumes = 0;
  for (const ImageEntry& entry : image.entries()) {
    if (entry.isPath) ++paths;
    if (entry.disk) ++volumes;
    if (!image.classes().conforms(entry.className, "KsSCSIMultipathedLogicalUnit")) continue;
    ++units;
    EXPECT_EQ(entry.parents.size(), 4U);
  }
  EXPECT_EQ(units, 5U);
  EXPECT_EQ(paths, 20U);
  EXPECT_EQ(volumes, 15U);
}

TEST(Generate, NamesABadArgument) {
  const auto expectRefusal = [](const std::string& arguments, const std::string& line) {
    const Outcome outcome = generate(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.output, "tavrenix-lab-generate: " + line + "\n") << arguments;
  };
  expectRefusal("x 1", "UNITS must be a number from 0 to 1000000");
  expectRefusal("1000001 1", "UNITS must be a number from 0 to 1000000");
  expectRefusal("1 -1", "PATHS must be a number from 0 to 10000");
  expectRefusal("1 1 1.5", "VOLUMES must be a number from 0 to 10000");
  expectRefusal("1000000 10000 10000", "an image has at most 2000000 entries");
  EXPECT_EQ(generate("1").status, 2);
  EXPECT_EQ(generate("1 2 3 4").status, 2);
  EXPECT_EQ(generate("--help").status, 0);
}

TEST(Generate, TellsThatItsOutputDidNotArrive) {
  for (const char* arguments : {"1000 4", "--help", "--version"}) {
    EXPECT_EQ(generate(std::string(arguments) + " > /dev/full").status, 1) << arguments;
  }
}

class LabTest : public testing::Test {
 protected:
  Outcome lab(const std::string& arguments) {
    return run("cd '" + scratch_.path("") + "' && '" TAVRENIX_LAB "' " + arguments);
  }
  void useSample(const std::string& name) {
    scratch_.write(name, contentsOf(TAVRENIX_SAMPLES + name));
  }

  static constexpr char kFinance[] = "600A0B8000112233445566778899AABB";
  Scratch scratch_;
};

TEST_F(LabTest, TellsThatItIsASimulation) {
  const Outcome help = lab("--help 2> /dev/null");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("This is a simulation"), std::string::npos);
  EXPECT_EQ(lab("-h").output, help.output);
  const Outcome none = lab("> /dev/null");
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.output, "");  // the redirections leave only standard output
  EXPECT_EQ(lab("--version").output, "tavrenix-lab 0.1.0\n");
  EXPECT_EQ(lab("--help > /dev/full").status, 1);
  EXPECT_EQ(lab("--version > /dev/full").status, 1);
}

TEST_F(LabTest, RefusesABadImageInOneLine) {
  const std::string text =
      R"({"generation": 1, "entries": [{"id": 1, "class": "C", "properties": {"Leaf": null}}]})";
  scratch_.write("bad.json", text);
  const Outcome outcome = lab("bad.json list");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output,
            "tavrenix-lab: bad.json: entries[0].properties.Leaf: null is no property-list value\n");
  EXPECT_EQ(contentsOf(scratch_.path("bad.json")), text);
  EXPECT_EQ(lab("none.json list").output,
            "tavrenix-lab: none.json: cannot be opened: No such file or directory\n");
  EXPECT_EQ(lab("--frobnicate").status, 2);
}

TEST_F(LabTest, ShowsAnImage) {
  useSample("small.json");
  const Outcome list = lab("small.json list");
  EXPECT_EQ(list.status, 0);
  EXPECT_EQ(list.output,
            "    Alias            Vendor           Product          LUN Identifier                 "
            "     Algorithm  "
            "           \n"
            "  1 Finance          EXAMPLE          Array 2          "
            "600A0B8000112233445566778899AABB    Modified "
            "Round Robin  \n"
            "  2 Archive          EXAMPLE          Array 2          "
            "600A0B8000112233445566778899AABC    Least Queue "
            "Depth     \n");
}

TEST_F(LabTest, AModificationIsThereAtTheNextCall) {
  useSample("small.json");
  const std::string lun = kFinance;
  EXPECT_EQ(lab("small.json modify path --lun " + lun + " --id 0102 --disable").status, 0);
  EXPECT_EQ(lab("small.json modify lun --id " + lun + " --algorithm LeastBytes").status, 0);
  const std::string info = lab("small.json info --id " + lun).output;
  EXPECT_NE(info.find("Disabled             0102"), std::string::npos) << info;
  EXPECT_NE(info.find("Active Optimized     0101"), std::string::npos) << info;
  EXPECT_NE(info.find("Least Bytes"), std::string::npos) << info;
  EXPECT_NE(info.find("disk2s1         Ledger"), std::string::npos) << info;
}

TEST_F(LabTest, TheCallerIsTheOneOfTheImage) {
  scratch_.write("user.json", R"({"generation": 1, "effectiveUser": 1000, "entries": []})");
  const Outcome outcome = lab("user.json list");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "'tavrenix-lab' must be run as root...\n");
}

TEST_F(LabTest, EveryOddityIsShown) {
  useSample("oddities.json");
  const Outcome list = lab("oddities.json list");
  EXPECT_EQ(list.status, 0);
  for (const char* shown : {"No Alias", "(NULL)", "Volume Sizes", "First Twin", "Tape"}) {
    EXPECT_NE(list.output.find(shown), std::string::npos) << shown;
  }
  for (const char* hidden : {"Processor", "Controller", "\x1b", "\a"}) {
    EXPECT_EQ(list.output.find(hidden), std::string::npos) << hidden;
  }
  const std::string sizes = lab("oddities.json info --id 600A0B80001122334455667700000005").output;
  for (const char* shown :
       {"   0.0 MB (0 Bytes)", "1000.0 MB (999999999 Bytes)", "   1.0 GB (1000000000 Bytes)",
        "1000.0 GB (1000000000000 Bytes)", "   1.0 TB (1000000000001 Bytes)"}) {
    EXPECT_NE(sizes.find(shown), std::string::npos) << shown;
  }
  EXPECT_EQ(sizes.find("Never Listed"), std::string::npos);
}

TEST(WatchProgram, TellsThatItIsASimulationAndRefusesWhatIsNoImage) {
  const auto watch = [](const std::string& arguments) {
    return run("'" TAVRENIX_LAB_WATCH "' " + arguments);
  };
  const Outcome help = watch("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("This is a simulation"), std::string::npos);
  EXPECT_EQ(watch("-h").output, help.output);
  EXPECT_EQ(watch("--version").output, "tavrenix-lab-watch 0.1.0\n");
  for (const char* bad : {"", "one.json two.json", "''"}) {
    const Outcome refused = watch(bad);
    EXPECT_EQ(refused.status, 2) << bad;
    EXPECT_EQ(refused.output, help.output) << bad;
  }
  EXPECT_EQ(watch("--follow").output,
            "tavrenix-lab-watch: unknown option --follow; see tavrenix-lab-watch --help\n");
  for (const char* arguments : {"--help", "--version"}) {
    EXPECT_EQ(watch(std::string(arguments) + " > /dev/full").status, 1) << arguments;
  }
}

}  // namespace
}  // namespace tavrenix::lab
