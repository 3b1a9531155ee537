// What the verbs of tavrenix-maintain have in common: their options, who runs them, and how they
// report.
#pragma once

#include "maintain/journal.hpp"
#include "maintain/library_world.hpp"
#include "monitor/verb_options.hpp"

namespace tavrenix::maintain {

// The options that several verbs know.
inline constexpr monitor::KnownOption kAcceptOption = {"accept", 'A', true};
inline constexpr monitor::KnownOption kJsonOption = {"json", 'j'};
inline constexpr monitor::KnownOption kDryRunOption = {"dry-run", 'n'};
inline constexpr monitor::KnownOption kJournalOption = {"journal", 'J', true};
inline constexpr monitor::KnownOption kWaitOption = {"wait", 'W', true};
inline constexpr monitor::KnownOption kConfirmOption = {"confirm", 'C'};

// The number of --wait, in seconds. Errors: throws monitor::Failure if it is none.
double waitOf(const monitor::CommandLine& line);
// The file of --journal, or the usual one. Errors: throws monitor::Failure if its name is empty.
std::string journalOf(const monitor::CommandLine& line, const std::string& usual);
LibraryWorld::Manners mannersOf(const monitor::CommandLine& line);

// Who runs the program: the user who called sudo, or the user of the process.
std::string currentUser();
std::string hostName();
// Returns an identifier that differs after each start of the machine, empty if there is none.
std::string bootID();
// The line by which a lock names this run.
std::string holderLine(const char* verb);

// Prints the result for a person or for a program, and returns the exit status: 0 if all went as it
// should, and 1 otherwise, also if the result cannot be printed.
int report(const Journal& journal, const monitor::CommandLine& line, bool isDone);

}  // namespace tavrenix::maintain
