// All that the library tells of this host's storage, read once. Every report is made from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavrenix::monitor {

// Since the device appeared.
struct Counters {
  std::uint64_t bytesSent = 0;      // written
  std::uint64_t bytesReceived = 0;  // read
  std::uint64_t commands = 0;
};

// Text is as the library gives it: it may hold anything, and is escaped by each report. What is
// absent is not known.
struct Path {
  std::string identifier;
  std::string state;  // one of kStates
  bool enabled = false;
  std::optional<Counters> counters;
  std::optional<std::string> interconnect, hostPort, targetPort;
  std::optional<std::string> device, deviceNumber, address;
  std::optional<std::string> driverState, deviceState, accessState;
  std::optional<std::uint64_t> group, failures, errors, timeouts, inFlight;

  const std::string& title() const { return device ? *device : identifier; }
};

struct Volume {
  std::optional<std::string> name, device;
  std::optional<std::uint64_t> size;  // bytes
};

struct Unit {
  std::string identifier;
  Counters counters;
  std::optional<std::string> alias, vendor, product, algorithm;
  std::optional<std::string> device, mapName, wwid, selector, handler;
  std::optional<std::uint64_t> batchCount, size, openCount;  // size in bytes
  std::optional<bool> queueing, suspended;
  std::vector<std::string> groups;  // states, in order of priority
  std::vector<Path> paths;          // by identifier
  std::vector<Volume> volumes;

  const std::string& title() const;
};

struct Host {
  std::optional<std::string> backing, kernelRelease;
  std::optional<bool> driverPresent, permitted;
  std::optional<std::uint64_t> generation;
};

struct Storage {
  Host host;
  std::vector<Unit> units;  // by identifier, then by device
};

inline constexpr const char* kStates[] = {"active_optimized", "active_nonoptimized", "standby",
                                          "unavailable"};

// Reads everything afresh. If units or paths change meanwhile it reads again, a few times; each
// unit and path is whole in any case. Errors: throws Failure if the caller may not ask the driver,
// or if memory ran out in the library.
Storage readStorage();
// Does the same, and shows a person at a terminal how far it has come.
Storage readStorageWithProgress();

// Returns a number that differs after units, paths or tables have changed, or nothing if there is
// none. It costs one question. Errors: throws Failure if memory ran out in the library.
std::optional<std::uint64_t> readGeneration();

// Returns true if text names the unit: identifier, alias, device, map name or WWID, in any letter
// case. pattern: text is a shell pattern (fnmatch).
bool isNamed(const Unit& unit, const std::string& text, bool pattern);

}  // namespace tavrenix::monitor
