// A client's session on storage that changes and fails. It checks that every public function and
// every command does what the public headers promise.
#pragma once

#include "tests/library/client.hpp"
#include "tests/session/any_storage.hpp"

namespace tavrenix::test {

// Discards what this process writes to standard error from now on.
void keepQuiet();

// Calls every function that takes a handle, for the units and all of their paths. This and the
// functions below end the process if a promise does not hold.
void useAll(const Owned<ObArrayRef>& units);

struct Output {
  int status;
  std::string text;
};
// Runs the command as the superuser. words: its arguments, without the program's name.
Output runCommand(std::vector<std::string> words);
// Checks that each line is printable ASCII, exactly as wide as a line of a report.
void expectReport(const std::string& output);
// Runs `list`, and the other commands with the identifier of each unit.
void runCommands(const Owned<ObArrayRef>& units);

// Runs a session of so many decisions, or until the input is used up. An operation of the host
// fails once in callsPerFault calls, or never if that is 0. At the end no handle may be left open,
// and the library must show the same as one that has just been loaded.
void runSession(Choices& choices, std::size_t decisions, std::uint64_t callsPerFault);

}  // namespace tavrenix::test
