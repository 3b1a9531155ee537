#include "tests/session/client_session.hpp"

#include <algorithm>
#include <map>

#include "cli/columns.hpp"
#include "cli/command.hpp"
#include "cli/reports.hpp"
#include "fuzz/promise.hpp"
#include "host/registry_names.hpp"

namespace tavrenix::test {

using fuzz::expect;

namespace {

bool isOneOf(ObTypeRef value, std::initializer_list<ObTypeRef> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

// Checks what the public header says of the properties of a unit or a path.
void expectProperties(ObDictionaryRef shown) {
  const auto expectType = [&](ObTypeID type, std::initializer_list<ObStringRef> keys) {
    for (const ObStringRef key : keys) {
      const ObTypeRef value = ObDictionaryGetValue(shown, key);
      expect(value == nullptr || ObGetTypeID(value) == type, "a property has its type");
    }
  };
  expectType(ObStringGetTypeID(),
             {kMPIOLogicalUnitAliasKey, kMPIOLogicalUnitVendorIDKey, kMPIOLogicalUnitProductIDKey,
              kMPIOLogicalUnitIdentifierKey, kMPIOLogicalUnitPathIdentifierKey,
              kMPIOLogicalUnitPathInterconnectKey});
  expectType(ObNumberGetTypeID(), {kMPIOLogicalUnitBatchCountKey});
  expectType(ObArrayGetTypeID(), {kMPIOLogicalUnitVolumesKey});
  expectType(ObDataGetTypeID(), {kMPIOLogicalUnitPathHostPortIdentifierKey});
  expectType(ObBooleanGetTypeID(), {kMPIOLogicalUnitPathEnabledKey});
  expect(isOneOf(ObDictionaryGetValue(shown, kMPIOLogicalUnitPathStateKey),
                 {nullptr, kMPIOPathStateActiveOptimized, kMPIOPathStateActiveNonOptimized,
                  kMPIOPathStateStandby, kMPIOPathStateUnavailable}),
         "a path's state is one of four");
  expect(isOneOf(ObDictionaryGetValue(shown, kMPIOLogicalUnitAlgorithmKey),
                 {nullptr, kMPIOLogicalUnitAlgorithmRoundRobin,
                  kMPIOLogicalUnitAlgorithmLeastQueueDepth, kMPIOLogicalUnitAlgorithmLeastBytes}),
         "an algorithm is one of three");
}

template <class Call, class... Arguments>
void change(Call call, Arguments... arguments) {
  Owned<ObErrorRef> error;
  const bool done = call(arguments..., error.out());
  const auto code = ObErrorGetCode(error.get());
  expect(!error || (!done && code >= kMPIOErrorBadArgument && code <= kMPIOErrorNoResources),
         "an error is one of the table, and of a change that is not done");
}

void usePath(MPIOLogicalUnitPathRef path) {
  expectProperties(Owned(MPIOLogicalUnitPathCopyProperties(path)).get());
  Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyStatistics(path));
  Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(path));
  change(MPIOLogicalUnitPathEnable, path);
  change(MPIOLogicalUnitPathDisable, path);
}

void useUnit(MPIOLogicalUnitRef unit) {
  expectProperties(Owned(MPIOLogicalUnitCopyProperties(unit)).get());
  Owned<ObDictionaryRef>(MPIOLogicalUnitCopyStatistics(unit));
  change(MPIOLogicalUnitSetAlgorithm, unit, kMPIOLogicalUnitAlgorithmRoundRobin);
  change(MPIOLogicalUnitSetBatchCount, unit, 3U);
  change(MPIOLogicalUnitEnableAllPaths, unit);
  change(MPIOLogicalUnitDisableAllPaths, unit);
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
  for (std::size_t i = 0; i < ObArrayGetCount(paths.get()); ++i)
    usePath(at<MPIOLogicalUnitPathRef>(paths, i));
}

std::size_t widthOf(std::span<const cli::Column> columns, std::size_t cli::Column::*gap) {
  std::size_t width = 0;
  for (const auto& column : columns) width += column.*gap + column.width;
  return width;
}

// All units and paths by entry ID, with their properties.
std::map<EntryID, Owned<ObDictionaryRef>> shownNow(memory::MemoryHost& host) {
  touch(host);
  std::map<EntryID, Owned<ObDictionaryRef>> shown;
  const Handles handles;
  for (std::size_t i = 0; i < ObArrayGetCount(handles.units.get()); ++i) {
    const auto unit = handles.unit(i);
    const auto paths = handles.paths(i);
    for (std::size_t j = 0; j < ObArrayGetCount(paths.get()); ++j) {
      const auto path = at<MPIOLogicalUnitPathRef>(paths, j);
      shown[modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID()] =
          Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyProperties(path));
    }
    shown[modelOf<MPIOLogicalUnit>(unit)->serviceEntryID()] =
        Owned<ObDictionaryRef>(MPIOLogicalUnitCopyProperties(unit));
  }
  return shown;
}

void expectTheTruth(memory::MemoryHost& host) {
  const auto shown = shownNow(host);
  MPIOManagerTeardown();
  MPIOManagerInitialize();
  const auto afresh = shownNow(host);
  expect(std::equal(shown.begin(), shown.end(), afresh.begin(), afresh.end(),
                    [](const auto& a, const auto& b) {
                      return a.first == b.first && ObEqual(a.second.get(), b.second.get());
                    }),
         "the library shows what it shows afresh");
}

void expectKind(const Event& event) {
  const bool ofUnit = ObGetTypeID(event.handle) == MPIOLogicalUnitGetTypeID();
  const bool fits = ofUnit ? isOneOf(event.kind, {kMPIOLogicalUnitAppearedNotification,
                                                  kMPIOLogicalUnitDisappearedNotification})
                           : isOneOf(event.kind, {kMPIOLogicalUnitPathAppearedNotification,
                                                  kMPIOLogicalUnitPathDisappearedNotification});
  expect(fits, "a notification is of its handle's kind");
}

constexpr std::string_view kWords =
    "list info modify LUN path --id -i --algorithm -a --batchCount -b --lun -l --enable -e "
    "--disable -d -- = RoundRobin LeastIO LeastBytes 01 0102 4294967295";

// Runs the command with up to eleven words, known ones and others.
void runAnyWords(Choices& choices) {
  std::vector<std::string> known, words;
  for (std::string_view rest = kWords; !rest.empty();)
    known.emplace_back(fuzz::takeUpTo(' ', rest));
  for (auto left = choices.below(12); left > 0; --left) {
    words.emplace_back(choices.onceIn(4) ? choices.bytes(40) : choices.oneOf(known));
    words.back().resize(std::min(words.back().size(), words.back().find('\0')));
  }
  const Output output = runCommand(words);
  expect(output.status == (words.empty() ? 1 : 0), "only a call without words has status 1");
  constexpr std::string_view kBeginnings[] = {"tavrenix\nUtility to manage", "    Alias",
                                              "Cannot locate lun with id ", "Unable to ",
                                              "Specified --batchCount is out of range"};
  expect(output.text.empty() || std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                                            [&](std::string_view beginning) {
                                              return output.text.starts_with(beginning);
                                            }),
         "the command prints only what it is known for");
}

void expectRequest(const ob::String& property, const ob::Object& value) {
  const auto* request = ob::as<ob::Dictionary>(&value);
  expect(property.equals(registry::kProperties) && request != nullptr, "a change is a request");
  const auto* states = request->valueAs<ob::Dictionary>(registry::kPathState);
  const auto* count = request->valueAs<ob::Number>(registry::kBatchCount);
  const bool isOfPaths = states != nullptr && request->pairs().size() == 1;
  const bool isOfUnit = request->pairs().size() == 2 && count != nullptr &&
                        count->asUInt64().value_or(UINT64_MAX) <= UINT32_MAX &&
                        request->value(registry::kAlgorithm) != nullptr;
  expect(isOfPaths || isOfUnit, "a request is one that a driver knows");
}

}  // namespace

// The library reports counters that it cannot read, and the command unknown words.
void keepQuiet() {
  static FILE* const nowhere = std::fopen("/dev/null", "w");
  stderr = nowhere;
}

void useAll(const Owned<ObArrayRef>& units) {
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i)
    useUnit(at<MPIOLogicalUnitRef>(units, i));
}

Output runCommand(std::vector<std::string> words) {
  words.insert(words.begin(), "tavrenix");
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  cli::gRowNumber = 1;
  keepQuiet();
  char* text = nullptr;
  std::size_t size = 0;
  FILE* const original = std::exchange(stdout, ::open_memstream(&text, &size));
  const int status = tavrenixMain(static_cast<int>(words.size()), argv.data(), [] { return 0U; });
  std::fclose(std::exchange(stdout, original));
  const std::unique_ptr<char, decltype(&std::free)> freed(text, &std::free);
  return {status, std::string(text, size)};
}

void expectReport(const std::string& output) {
  using cli::Column;
  constexpr std::size_t kNumber = 3;  // of a row; no report here has a thousand
  const std::size_t widths[] = {0,
                                std::string_view("    Volumes:").size(),
                                kNumber + widthOf(cli::kUnitColumns, &Column::gap),
                                widthOf(cli::kPathColumns, &Column::gap),
                                widthOf(cli::kPathColumns, &Column::headerGap),
                                widthOf(cli::kVolumeColumns, &Column::gap),
                                widthOf(cli::kVolumeColumns, &Column::headerGap)};
  expect(output.empty() || output.back() == '\n', "a report ends with a newline");
  for (std::string_view rest = output; !rest.empty();) {
    const std::string_view line = fuzz::takeUpTo('\n', rest);
    expect(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }),
           "a report is printable ASCII");
    expect(std::find(std::begin(widths), std::end(widths), line.size()) != std::end(widths),
           "a line of a report is as wide as its columns");
  }
}

void runCommands(const Owned<ObArrayRef>& units) {
  expectReport(runCommand({"list"}).text);
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i) {
    const Owned<ObDictionaryRef> properties(
        MPIOLogicalUnitCopyProperties(at<MPIOLogicalUnitRef>(units, i)));
    const ObTypeRef known = ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitIdentifierKey);
    if (known == nullptr) continue;
    const std::string id = utf8(known);
    const auto info = runCommand({"info", "-i", id});
    if (!info.text.starts_with("Cannot locate lun")) expectReport(info.text);  // a fault hit it
    runCommand({"modify", "lun", "-i", id, "-a", "LeastIO", "-b", "2"});
    runCommand({"modify", "path", "-l", id, "-i", "01", "-d"});
  }
}

void runSession(Choices& choices, std::size_t decisions, std::uint64_t callsPerFault) {
  keepQuiet();
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  AnyStorage any(storage, choices);
  Choices faults(choices.below(UINT32_MAX));
  std::atomic<bool> calm{callsPerFault == 0};
  host->watch.alsoFails = [&] {
    if (calm || !faults.onceIn(callsPerFault)) return false;
    if (faults.onceIn(4)) throw std::bad_alloc();
    return true;
  };
  storage.registry().setWriteHandler(
      [&](EntryID, const ob::String& property, const ob::Object& value) {
        expectRequest(property, value);
        return faults.onceIn(2) ? kSuccess : KernelStatus{-16};
      });
  {
    Owned<ObArrayRef> units;  // some of them gone by now
    QueueClient onQueue;
    RunLoopClient onLoop;
    onQueue.onEvent = onLoop.onEvent = expectKind;
    const std::function<void()> steps[] = {
        [&] { any.change(); },
        [&] { any.change(); },
        [&] { touch(storage); },
        [&] { units = Owned<ObArrayRef>(MPIOCopyLogicalUnits()); },
        [&] { useAll(units); },
        [&] { runCommands(units); },
        [&] { runAnyWords(choices); },
        [&] { choices.onceIn(2) ? static_cast<void>(onLoop.start()) : onLoop.stop(); },
        [&] {
          onQueue.stop();
          if (choices.onceIn(2)) return;
          // A creation that fails leaves its port behind, on purpose.
          const bool was = calm.exchange(true);
          onQueue.alone([&] { onQueue.start(); });
          calm = was;
        }};
    for (; decisions > 0 && !choices.areOver(); --decisions) {
      {
        const memory::MemoryRegistry::HeldNotifications held(storage.registry());
        choices.oneOf(steps)();
      }
      onQueue.take();
      onLoop.take();
    }
    calm = true;
  }
  expectTheTruth(storage);
  expect(storage.registry().openHandles() == 0, "no handle stays open");
}

}  // namespace tavrenix::test
