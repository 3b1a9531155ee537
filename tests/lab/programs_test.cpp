// The programs of the folder as a person runs them.
#include <sys/wait.h>

#include <cstdio>
#include <memory>

#include "lab/image.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

struct Outcome {
  int status;
  std::string output;  // both streams
};

Outcome run(const std::string& command) {
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return {-1, ""};
  std::string output;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe))
    output.append(buffer, got);
  const int status = ::pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

Outcome generate(const std::string& arguments) {
  return run(TAVRENIX_LAB_GENERATE " " + arguments);
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
  EXPECT_EQ(generate("1000 4 > /dev/full").status, 1);
}

}  // namespace
}  // namespace tavrenix::lab
