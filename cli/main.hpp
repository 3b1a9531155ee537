// The front end's entry, the same for every program that carries it.
#pragma once

#include <cstdint>

/// Runs the tool once for the process and returns its exit status: 1 where no argument is given or
/// where the caller is not the superuser, 0 in every other case, failures included. argv is that of
/// main, and is reordered. effectiveUser answers the caller's effective user ID, as geteuid does;
/// it is asked at most once, and not at all where the usage is all that is wanted.
int tavrenixMain(int argc, char** argv, std::uint32_t (*effectiveUser)());
