// Images of the simulated host. A text is refused in one line, or it is an image that keeps its
// meaning when it is printed, shown by a host, changed and read again.
#include "lab/image/image.hpp"

#include <fstream>

#include "fuzz/promise.hpp"
#include "host/registry_names.hpp"
#include "lab/driver.hpp"
#include "lab/simulated_host.hpp"
#include "runtime/byte_text.hpp"
#include "tests/linux/scratch.hpp"

using namespace tavrenix;
using namespace tavrenix::lab;
using fuzz::expect;

namespace {

// The host's file.
const std::string& path() {
  static const test::Scratch scratch;
  static const std::string path = scratch.folder() / "image.json";
  return path;
}

Image readFile() {
  std::ifstream in(path(), std::ios::binary);
  return Image::parse(std::string(std::istreambuf_iterator<char>(in), {}));
}

// Expects that the host shows the image and leaves no handle open.
void expectShown(memory::MemoryHost& host, const Image& image) {
  for (const ImageEntry& entry : image.entries()) {
    const auto properties = host.registry().properties(entry.id);
    expect(properties && properties->equals(*entry.properties), "a host shows its image");
    if (entry.isPath && entry.statistics) {
      const auto record = host.tunable().pathStatistics(entry.id);
      expect(record && record->state == entry.statistics->state, "a host shows a path's state");
    }
  }
  expect(host.registry().openHandles() == 0, "no handle stays open");
}

// Returns requests in JSON: an algorithm, and to disable and enable the first path that has an
// identifier.
std::vector<std::string> requestsTo(const Image& image, const ImageEntry& unit) {
  std::vector<std::string> requests{R"({"Algorithm": "Least Bytes", "Batch Count": 7})"};
  for (const EntryID id : unit.parents) {
    const auto* bytes = image.find(id)->properties->valueAs<ob::Data>(registry::kPathIdentifier);
    if (bytes == nullptr) continue;
    for (const char* state : {"3", "0"}) {
      requests.push_back(R"({"PathState": {")" + ob::hexadecimal(bytes->bytes()) + "\": " + state +
                         "}}");
    }
    break;
  }
  return requests;
}

void change(memory::MemoryHost& host, const ImageEntry& unit) {
  const ScopedHandle entry(host.registry(), host.registry().findServiceByEntryID(unit.id));
  for (const auto& text : requestsTo(readFile(), unit)) {
    const auto request = valueFromJSON(readJSON(text), Place());
    Image before = readFile();
    const bool isDone =
        host.registry().setProperty(entry.get(), registry::kProperties, *request) == kSuccess;
    const Image after = readFile();
    expect(!isDone || after.generation() != before.generation(), "a change moves the generation");
    before.takeWriteStatus();
    expect(isDone || after.text() == before.text(), "a refusal changes nothing");
  }
}

void expectUsable(const Image& image) {
  std::ofstream(path(), std::ios::binary) << image.text();
  SimulatedHost host([](std::string_view) { expect(false, "a sound image can be changed"); });
  host.load(path());
  expectShown(host.memory(), image);
  // A few entries that are units, and one that is no unit.
  std::size_t units = 0;
  std::size_t others = 0;
  for (const ImageEntry& entry : image.entries()) {
    const bool isUnit = image.classes().conforms(entry.className, registry::kLogicalUnitClass);
    if (isUnit ? ++units <= 3 : ++others <= 1) change(host.memory(), entry);
  }
  expectShown(host.memory(), readFile());
  host.reload();
  expectShown(host.memory(), readFile());
}

}  // namespace

void tavrenix::fuzz::run(std::string_view text) {
  std::optional<Image> image;
  try {
    image = Image::parse(text);
  } catch (const ImageError& error) {
    const std::string_view message = error.what();
    expect(!message.empty() && fuzz::isShown(message, message.size()),
           "a refusal is one printable line");
    expect(message.size() < 8192, "a refusal is of a bounded length");
    return;
  }
  const std::string printed = image->text();
  expect(readJSON(printed) == readJSON(text), "a printed image is the same document");
  const Image again = Image::parse(printed);
  expect(again.text() == printed, "a printed image reads the same");
  expectUsable(again);
}
