#include "maintain/common_options.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "maintain/journal_json.hpp"
#include "maintain/ticket.hpp"
#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

double waitOf(const monitor::CommandLine& line) {
  constexpr std::uint64_t kMost = 86'400, kUsual = 30;
  return static_cast<double>(line.number(kWaitOption.letter, 0, kMost).value_or(kUsual));
}

std::string journalOf(const monitor::CommandLine& line, const std::string& usual) {
  std::string file = line.value(kJournalOption.letter).value_or(usual);
  if (file.empty()) throw monitor::Failure("--journal needs the name of a file");
  return file;
}

LibraryWorld::Manners mannersOf(const monitor::CommandLine& line) {
  return {line.has(kConfirmOption.letter), line.has(kJsonOption.letter)};
}

std::string currentUser() {
  const char* const caller = std::getenv("SUDO_USER");
  if (caller != nullptr && *caller != '\0') return caller;
  const passwd* const entry = ::getpwuid(::geteuid());
  return entry != nullptr ? entry->pw_name : std::to_string(::geteuid());
}

std::string hostName() {
  char name[256] = {};
  ::gethostname(name, sizeof name - 1);
  return name;
}

std::string bootID() {
  try {
    const std::string text = monitor::readFile("/proc/sys/kernel/random/boot_id");
    return text.substr(0, text.find('\n'));
  } catch (const monitor::Failure&) {
    return {};
  }
}

std::string holderLine(const char* verb) {
  return std::string(verb) + " by " + currentUser() + " since " + utcNow() + ", process " +
         std::to_string(::getpid());
}

int report(const Journal& journal, const monitor::CommandLine& line, bool isDone) {
  try {
    monitor::print(line.has(kJsonOption.letter) ? monitor::textOf(documentOf(journal), false)
                                                : '\n' + ticketText(journal, {}));  // never cut
    return isDone ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "the result is in the journal alone: %s\n", error.what());
    return 1;
  }
}

}  // namespace tavrenix::maintain
