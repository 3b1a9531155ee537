#include "maintain/library_world.hpp"

#include <unistd.h>

#include <chrono>
#include <ctime>

#include "maintain/journal_file.hpp"
#include "monitor/failure.hpp"
#include "monitor/public_value.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Owned;

// A handle retains what it stands for, so it may leave the array that it was found in.
template <class Ref>
Owned<Ref> retained(Ref handle) {
  return Owned<Ref>(static_cast<Ref>(ObRetain(handle)));
}

Owned<MPIOLogicalUnitRef> unitHandle(const monitor::Unit& wanted) {
  const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
  Owned<MPIOLogicalUnitRef> found;
  monitor::forEach(units.get(), [&](ObTypeRef value) {
    const auto unit = static_cast<MPIOLogicalUnitRef>(value);
    const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(unit));
    const Owned<ObDictionaryRef> details(MPIOLogicalUnitCopyDetails(unit));
    const bool isWanted =
        monitor::text(properties.get(), kMPIOLogicalUnitIdentifierKey) == wanted.identifier &&
        monitor::text(details.get(), kMPIOLogicalUnitDetailWWIDKey) == wanted.wwid;
    if (isWanted) found = retained(unit);
  });
  return found;
}

Owned<MPIOLogicalUnitPathRef> pathHandle(MPIOLogicalUnitRef unit, const monitor::Path& wanted) {
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
  Owned<MPIOLogicalUnitPathRef> found;
  monitor::forEach(paths.get(), [&](ObTypeRef value) {
    const auto path = static_cast<MPIOLogicalUnitPathRef>(value);
    const Owned<ObDictionaryRef> properties(MPIOLogicalUnitPathCopyProperties(path));
    const auto identifier = monitor::text(properties.get(), kMPIOLogicalUnitPathIdentifierKey);
    if (identifier == wanted.identifier) found = retained(path);
  });
  return found;
}

std::string descriptionOf(ObErrorRef error) {
  const Owned<ObErrorRef> owned(error);
  const Owned<ObStringRef> text(error == nullptr ? nullptr : ObErrorCopyDescription(error));
  return text ? monitor::visible(monitor::textOf(text.get()).value_or("")) : "no reason is known";
}

}  // namespace

std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  char text[40];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

LibraryWorld::LibraryWorld(std::string journalFile, Manners manners)
    : journalFile_(std::move(journalFile)),
      manners_(manners),
      output_(manners.tellsOnError ? STDERR_FILENO : STDOUT_FILENO),
      isTerminal_(::isatty(output_) != 0) {}

monitor::Storage LibraryWorld::read() {
  MPIOHostRefresh();  // a request to one path may have hidden a change of others
  return monitor::readStorage();
}

void LibraryWorld::setUsed(const monitor::Unit& unit, const monitor::Path& path, bool isUsed) {
  const auto owner = unitHandle(unit);
  const auto handle = owner ? pathHandle(owner.get(), path) : nullptr;
  if (!handle) throw Failure("the path is gone");
  ObErrorRef error = nullptr;
  const bool isDone = isUsed ? MPIOLogicalUnitPathEnable(handle.get(), &error)
                             : MPIOLogicalUnitPathDisable(handle.get(), &error);
  const std::string why = isDone ? "" : descriptionOf(error);
  if (!isDone) {
    throw Failure("the driver refuses to " + std::string(isUsed ? "use " : "disable ") +
                  monitor::visible(path.title()) + ": " + why);
  }
}

void LibraryWorld::keep(const Journal& journal) {
  writeJournal(journalFile_, journal);
}

void LibraryWorld::pause() {
  constexpr int kMilliseconds = 50;
  signals_.sleep(kMilliseconds);
}

double LibraryWorld::seconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

std::string LibraryWorld::now() {
  return utcNow();
}

bool LibraryWorld::isStopped() {
  return signals_.hasCome();
}

// Only an empty line confirms: the end of the input, as of a closed terminal, does not.
bool LibraryWorld::isConfirmed(const std::string& step) {
  if (!manners_.asksBeforeSteps) return true;
  tell(step + "; Enter goes on");
  std::string line;
  for (char byte = 0; byte != '\n'; line += byte) {
    if (!signals_.awaitReadable(STDIN_FILENO) || ::read(STDIN_FILENO, &byte, 1) != 1) return false;
  }
  return line == "\n";
}

void LibraryWorld::tell(const std::string& line) {
  write((isProgressShown_ ? "\r\033[K" : "") + line + '\n');
  isProgressShown_ = false;
}

void LibraryWorld::showProgress(const std::string& text) {
  if (!isTerminal_) return;
  write("\r\033[K" + text);
  isProgressShown_ = true;
}

void LibraryWorld::write(const std::string& text) const {
  [[maybe_unused]] const ssize_t written = ::write(output_, text.data(), text.size());
}

}  // namespace tavrenix::maintain
