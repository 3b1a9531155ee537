// tavrenix-lab-generate: prints an image of as many units, paths and volumes as one asks for. The
// same numbers give the same image, and memory does not grow with them.
#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>

namespace {

constexpr int kBadUse = 2;
constexpr std::uint64_t kMostUnits = 1'000'000;
constexpr std::uint64_t kMostOfAUnit = 10'000;
constexpr std::uint64_t kMostEntries = 2'000'000;  // keeps the image below the 1 GiB that is read

constexpr char kHelp[] =
    "usage: tavrenix-lab-generate UNITS PATHS [VOLUMES]\n"
    "\n"
    "Prints an image for tavrenix-lab: UNITS logical units of PATHS paths each, and of VOLUMES\n"
    "volumes each (1 where it is left out). The same numbers always give the same image.\n"
    "\n"
    "  tavrenix-lab-generate 2 3 > try.json\n"
    "  tavrenix-lab try.json list\n";

struct Sizes {
  std::uint64_t units = 0;
  std::uint64_t paths = 0;
  std::uint64_t volumes = 1;
};

std::optional<std::uint64_t> count(std::string_view name, std::string_view text,
                                   std::uint64_t most) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc() && end == text.data() + text.size() && value <= most) return value;
  std::fprintf(stderr, "tavrenix-lab-generate: %.*s must be a number from 0 to %" PRIu64 "\n",
               static_cast<int>(name.size()), name.data(), most);
  return std::nullopt;
}

std::optional<Sizes> sizesFrom(int argc, char** argv) {
  const auto units = count("UNITS", argv[1], kMostUnits);
  const auto paths = count("PATHS", argv[2], kMostOfAUnit);
  const auto volumes = argc > 3 ? count("VOLUMES", argv[3], kMostOfAUnit) : 1;
  if (!units || !paths || !volumes) return std::nullopt;
  const Sizes sizes{*units, *paths, *volumes};
  if (sizes.paths + sizes.units * (1 + sizes.paths + sizes.volumes) <= kMostEntries) return sizes;
  std::fprintf(stderr, "tavrenix-lab-generate: an image has at most %" PRIu64 " entries\n",
               kMostEntries);
  return std::nullopt;
}

// IDs run on from here: first the ports, one for each path of a unit, then unit by unit its paths,
// itself and its volumes.
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
    // The first half of a unit's paths leads to the controller that owns it.
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

// What the program prints; its exit status.
int run(int argc, char** argv) {
  const std::string_view first = argc < 2 ? "" : argv[1];
  if (first == "--help" || first == "-h") {
    std::fputs(kHelp, stdout);
    return 0;
  }
  if (first == "--version") {
    std::puts("tavrenix-lab-generate " TAVRENIX_VERSION);
    return 0;
  }
  if (argc < 3 || argc > 4) {
    std::fputs(kHelp, stderr);
    return kBadUse;
  }
  const auto sizes = sizesFrom(argc, argv);
  if (!sizes) return kBadUse;
  Generator(*sizes).print();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int status = run(argc, argv);
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  std::perror("tavrenix-lab-generate: standard output");
  return 1;
}
