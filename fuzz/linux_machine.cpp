// What the kernel, its driver, udev and the daemon say of a machine, all of it any text: the Linux
// host makes of it what a client can use, and reports that no terminal acts on.
#include <cerrno>

#include "fuzz/captured.hpp"
#include "fuzz/promise.hpp"
#include "fuzz/session.hpp"
#include "fuzz/sysfs.hpp"
#include "linux/host.hpp"
#include "linux/text.hpp"
#include "tests/linux/fake_daemon.hpp"
#include "tests/support/library_host.hpp"

using namespace tavrenix;
using fuzz::expect;

namespace {

constexpr sys::DeviceNumber kMap{254, 0};
constexpr std::size_t kLongestLine = 400;

// A driver with one map, whose texts and answers are the input's.
class AnyDriver final : public sys::DeviceMapperPort {
 public:
  explicit AnyDriver(FuzzedDataProvider& input)
      : name_(input.ConsumeRandomLengthString(128)),
        uuid_("mpath-" + input.ConsumeRandomLengthString(129)),
        type_(input.ConsumeBool() ? "multipath" : input.ConsumeRandomLengthString(16)),
        table_(input.ConsumeRandomLengthString(kLongestLine)),
        status_(input.ConsumeRandomLengthString(kLongestLine)),
        loaded_(input.ConsumeRandomLengthString(kLongestLine)),
        answer_(input.ConsumeBool() ? 0 : -EINVAL) {}

  sys::Answer<std::vector<sys::ListedMap>> list() override {
    return {0, {{kMap, name_, uuid_, 1}}};
  }
  sys::Answer<sys::MapLines> read(sys::DeviceNumber map, sys::Lines which) override {
    if (map != kMap) return {-ENXIO, {}};
    const auto& line = which == sys::Lines::kTable    ? table_
                       : which == sys::Lines::kStatus ? status_
                                                      : loaded_;
    sys::MapLines lines;
    lines.name = name_;
    lines.uuid = uuid_;
    lines.targets.push_back({0, 16384, type_, line});
    return {0, lines};
  }
  int load(sys::DeviceNumber, const sys::Target&, bool) override { return answer_; }
  int resume(sys::DeviceNumber) override { return answer_; }
  int clear(sys::DeviceNumber) override { return answer_; }
  int message(sys::DeviceNumber, const std::string&) override { return answer_; }

 private:
  std::string name_, uuid_, type_, table_, status_, loaded_;
  int answer_;
};

// A daemon whose one reply is the input's.
test::FakeDaemon anyDaemon(FuzzedDataProvider& input) {
  test::FakeDaemon daemon;
  daemon.answer = [reply = input.ConsumeRandomLengthString(64)](const std::string& command) {
    expect(command.find_first_of(std::string_view("\n\0", 2)) == std::string::npos,
           "a command is one line");
    return sys::Answer<sys::DaemonReply>{reply.empty() ? -ENOENT : 0, sys::parseDaemonReply(reply)};
  };
  return daemon;
}

bool isShown(std::string_view text) {
  return sys::printable(text) == text;
}

// Whatever comes from a device has become printable before it is a string of the registry.
void expectPrintable(const ob::Object* value) {
  if (const auto* text = ob::as<ob::String>(value)) {
    expect(text->view().size() <= 255 && isShown(text->view()), "a property is printable");
  } else if (const auto* dictionary = ob::as<ob::Dictionary>(value)) {
    for (const auto& pair : dictionary->pairs()) expectPrintable(pair.second.get());
  }
}

void expectPrintableRegistry(sys::LinuxRegistry& registry) {
  const auto found = registry.findServicesByClass("KsService");
  while (const RegistryHandle entry = registry.iteratorNext(found.value)) {
    const auto properties = registry.copyProperties(entry);
    expectPrintable(properties.value.get());
    registry.release(entry);
  }
  registry.release(found.value);
}

}  // namespace

void tavrenix::fuzz::run(std::string_view bytes) {
  const fuzz::Captured diagnostics(stderr);  // the library tells of counters that it lacks
  static const fuzz::Sysfs files;
  FuzzedDataProvider input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  AnyDriver driver(input);
  auto daemon = anyDaemon(input);
  files.write(input);
  // One burst of questions, so that a run does not depend on time.
  sys::LinuxHost host(sys::HostFiles(files.root()), driver, daemon, 0, std::chrono::hours(1));
  expectPrintableRegistry(host.registry());
  {
    manager().lastGeneration = 0;  // the machines before this one are forgotten
    const test::UnderLibrary library(host);
    const test::Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
    fuzz::useAll(units);
    fuzz::runCommands(units);
  }
  expect(host.registry().openHandles() == 0, "no handle stays open");
}
