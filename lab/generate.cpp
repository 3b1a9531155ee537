// tavrenix-lab-generate: prints an image of so many units, paths and volumes. The same numbers give
// the same image. It prints while it counts, so its memory does not grow with the numbers.
#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "lab/lab_options.hpp"

namespace {

using tavrenix::lab::kBadUse;

constexpr std::uint64_t kMostUnits = 1'000'000;
constexpr std::uint64_t kMostPerUnit = 10'000;
constexpr std::uint64_t kMostEntries =
    2'000'000;  // so that the image stays below the 1 GiB that is read

constexpr char kHelp[] =
    "usage: tavrenix-lab-generate UNITS PATHS [VOLUMES]\n"
    "       tavrenix-lab-generate --help | --version\n"
    "\n"
    "Prints an image for tavrenix-lab: UNITS logical units, and for each of them PATHS paths and\n"
    "VOLUMES volumes (1 by default). The same numbers always give the same image.\n"
    "\n"
    "  tavrenix-lab-generate 2 3 > try.json\n"
    "  tavrenix-lab try.json list\n";

constexpr tavrenix::lab::Program kProgram{
    .name = "tavrenix-lab-generate",
    .help = kHelp,
    .leastWords = 2,
    .mostWords = 3,
};

struct Sizes {
  std::uint64_t units = 0;
  std::uint64_t paths = 0;
  std::uint64_t volumes = 1;
};

std::optional<std::uint64_t> count(const std::string& name, std::string_view text,
                                   std::uint64_t most) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc() && end == text.data() + text.size() && value <= most) return value;
  complain(kProgram, name + " must be a number from 0 to " + std::to_string(most));
  return std::nullopt;
}

std::optional<Sizes> sizesFrom(std::span<char*> words) {
  const auto units = count("UNITS", words[0], kMostUnits);
  const auto paths = count("PATHS", words[1], kMostPerUnit);
  const auto volumes = words.size() > 2 ? count("VOLUMES", words[2], kMostPerUnit) : 1;
  if (!units || !paths || !volumes) return std::nullopt;
  const Sizes sizes{*units, *paths, *volumes};
  if (sizes.paths + sizes.units * (1 + sizes.paths + sizes.volumes) <= kMostEntries) return sizes;
  complain(kProgram, "an image has at most " + std::to_string(kMostEntries) + " entries");
  return std::nullopt;
}

// The ID of the first entry; IDs count up. The ports come first, one for each path of a unit. Then
// come, for each unit, its paths, the unit itself and its volumes.
constexpr std::uint64_t kFirstID = 0x100000000;

class Generator {
 public:
  explicit Generator(Sizes sizes) : sizes_(sizes) {}

  void print() {
    std::fputs("{\n  \"generation\": 1,\n  \"entries\": [", stdout);
    for (std::uint64_t port = 0; port < sizes_.paths; ++port) printPort(port);
    for (std::uint64_t unit = 0; unit < sizes_.units; ++unit) printUnit(unit);
    std::fputs("\n  ]\n}\n", stdout);
  }

 private:
  void startEntry(const char* className) {
    std::printf("%s\n    {\"id\": %" PRIu64 ", \"class\": \"%s\"", nextID_ == kFirstID ? "" : ",",
                nextID_, className);
    ++nextID_;
  }

  void printPort(std::uint64_t port) {
    startEntry("SimulatedPort");
    std::printf(
        ", \"properties\": {\"Controller Characteristics\": "
        "{\"Unique SCSI Port Identifier\": {\"$data\": \"2100001B32%06" PRIX64 "\"}}}}",
        port + 1);
  }

  void printPath(std::uint64_t unit, std::uint64_t path) {
    startEntry("KsSCSIHierarchicalLogicalUnit");
    // The first half of a unit's paths is optimized, as on an array of two controllers.
    const int state = path * 2 < sizes_.paths ? 0 : 1;
    std::printf(", \"parents\": [%" PRIu64
                "],\n"
                "     \"properties\": {\"Logical Unit Path Identifier\": {\"$data\": \"%04" PRIX64
                "\"},\n"
                "       \"Protocol Characteristics\": {\"Physical Interconnect\": \"Fibre Channel "
                "Interface\"}},\n"
                "     \"statistics\": {\"sent\": %" PRIu64 ", \"received\": %" PRIu64
                ", \"commands\": %" PRIu64 ", \"state\": %d}}",
                kFirstID + path, 0x0101 + path, unit * 4096, path * 8192, unit + path, state);
  }

  void printUnit(std::uint64_t unit) {
    static constexpr const char* kAlgorithms[] = {"Modified Round Robin", "Least Queue Depth",
                                                  "Least Bytes"};
    const std::uint64_t firstPath = nextID_;
    for (std::uint64_t path = 0; path < sizes_.paths; ++path) printPath(unit, path);
    const std::uint64_t id = nextID_;
    startEntry("KsSCSIMultipathedLogicalUnit");
    std::fputs(", \"parents\": [", stdout);
    for (std::uint64_t path = 0; path < sizes_.paths; ++path) {
      std::printf("%s%" PRIu64, path == 0 ? "" : ", ", firstPath + path);
    }
    std::printf(
        "],\n"
        "     \"properties\": {\"Logical Unit Unique Identifier\": "
        "{\"$data\": \"600A0B800011223344556677%08" PRIX64
        "\"},\n"
        "       \"Logical Unit Alias\": \"Unit %" PRIu64
        "\", \"Vendor Identification\": \"EXAMPLE\", "
        "\"Product Identification\": \"Simulated LUN\",\n"
        "       \"Load Balancing Algorithm\": \"%s\", \"Batch Count\": 8, "
        "\"Peripheral Device Type\": 0},\n"
        "     \"statistics\": {\"sent\": %" PRIu64 ", \"received\": %" PRIu64
        ", \"commands\": %" PRIu64 "}}",
        unit + 1, unit + 1, kAlgorithms[unit % 3], unit * 4096 * sizes_.paths, unit * 8192, unit);
    for (std::uint64_t volume = 0; volume < sizes_.volumes; ++volume) printVolume(unit, id, volume);
  }

  void printVolume(std::uint64_t unit, std::uint64_t unitID, std::uint64_t volume) {
    startEntry("KsMedia");
    std::printf(", \"parents\": [%" PRIu64
                "],\n"
                "     \"properties\": {\"Leaf\": true, \"Content\": \"Data\"},\n"
                "     \"disk\": {\"volumeName\": \"Volume %" PRIu64 ".%" PRIu64
                "\", \"bsdName\": \"disk%" PRIu64 "s%" PRIu64 "\", \"mediaSize\": %" PRIu64 "}}",
                unitID, unit + 1, volume + 1, unit + 2, volume + 1, (volume + 1) * 500'000'000'000);
  }

  Sizes sizes_;
  std::uint64_t nextID_ = kFirstID;
};

int run(const tavrenix::lab::CommandLine& line) {
  const auto sizes = sizesFrom(line.words);
  if (!sizes) return kBadUse;
  Generator(*sizes).print();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return 0;
  std::perror("tavrenix-lab-generate: standard output");
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  return tavrenix::lab::runProgram(kProgram, argc, argv, run);
}
