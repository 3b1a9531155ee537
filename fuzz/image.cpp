// Registry images: any text is refused in one line, or it stays what it is when it is printed,
// shown by a host, changed and read again.
#include "lab/image.hpp"

#include <fstream>

#include "fuzz/promise.hpp"
#include "lab/driver.hpp"
#include "lab/host.hpp"
#include "lab/value_text.hpp"
#include "model/registry_names.hpp"
#include "tests/linux/scratch.hpp"

using namespace tavrenix;
using namespace tavrenix::lab;
using fuzz::expect;

namespace {

// The host's file.
class File {
 public:
  std::string path() const { return scratch_.folder() / "image.json"; }
  void write(std::string_view text) const { std::ofstream(path(), std::ios::binary) << text; }
  Image read() const {
    std::ifstream in(path(), std::ios::binary);
    return Image::parse(std::string(std::istreambuf_iterator<char>(in), {}));
  }

 private:
  test::Scratch scratch_;
};

// That the host shows the image, and holds nothing of it open.
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

// Writes a request to an entry as a client does.
KernelStatus ask(memory::MemoryHost& host, EntryID id, const ob::Object& request) {
  auto& registry = host.registry();
  const RegistryHandle entry = registry.findServiceByEntryID(id);
  const KernelStatus status = registry.setProperty(entry, registry::kProperties, request);
  registry.release(entry);
  return status;
}

ob::Ref<const ob::Object> algorithmRequest() {
  ob::DictionaryBuilder request(2);
  request.add(registry::kAlgorithm, ob::Ref<const ob::String>::retain(&registry::kLeastBytes));
  request.add(registry::kBatchCount, ob::Number::make(std::int64_t{7}));
  return request.build();
}

// To switch the first of the unit's paths that can be named; none where none can.
ob::Ref<const ob::Object> pathRequest(const Image& image, const ImageEntry& unit) {
  for (const EntryID id : unit.parents) {
    const ImageEntry& path = *image.find(id);
    const auto* bytes = path.properties->valueAs<ob::Data>(registry::kPathIdentifier);
    if (bytes == nullptr) continue;
    const bool disabled = path.statistics && (path.statistics->state & kPathStateDisabledBit) != 0;
    ob::DictionaryBuilder states(1);
    states.add(*ob::String::make(hexFromBytes(bytes->bytes())),
               ob::Number::make(disabled ? registry::kMPIOPathStateRequestEnable
                                         : registry::kMPIOPathStateRequestDisable));
    ob::DictionaryBuilder request(1);
    request.add(registry::kPathState, states.build());
    return request.build();
  }
  return nullptr;
}

void change(const File& file, SimulatedHost& host, const ImageEntry& unit) {
  for (const auto& request : {algorithmRequest(), pathRequest(file.read(), unit)}) {
    if (!request) continue;
    const Image before = file.read();
    const KernelStatus status = ask(host.memory(), unit.id, *request);
    const Image after = file.read();
    expect(status != kSuccess || after.generation() != before.generation(),
           "a change moves the generation of the file");
    Image refused = before;
    refused.takeWriteStatus();
    expect(status == kSuccess || after.text() == refused.text(), "a refusal changes nothing");
    expectShown(host.memory(), after);
  }
}

void expectUsable(const Image& image) {
  static const File file;
  file.write(image.text());
  SimulatedHost host([](std::string_view) { expect(false, "a sound image can be changed"); });
  host.load(file.path());
  expectShown(host.memory(), image);
  // A few units, and one entry that is none.
  std::size_t units = 0;
  std::size_t others = 0;
  for (const ImageEntry& entry : image.entries()) {
    const bool isUnit = image.classes().conforms(entry.className, registry::kLogicalUnitClass);
    if (isUnit ? ++units <= 3 : ++others <= 1) change(file, host, entry);
  }
  host.reload();
  expectShown(host.memory(), file.read());
}

}  // namespace

void tavrenix::fuzz::run(std::string_view text) {
  std::optional<Image> image;
  try {
    image = Image::parse(text);
  } catch (const ImageError& error) {
    const std::string_view message = error.what();
    expect(!message.empty() && printable(message, message.size() + 1) == message,
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
