// The floors: plain loops that read the same entries and print the same rows as the library and the
// command, but make no objects or dictionaries and take no locks. They show how fast the work could
// be.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "host/host.hpp"
#include "host/memory/memory_host.hpp"

namespace tavrenix::bench {

class Floor {
 public:
  // Looks all entries up, so that this is not part of what is measured.
  Floor(memory::MemoryHost& host, std::uint64_t units, std::uint64_t paths);

  // Reads all that a first scan reads, and keeps none of it.
  void scan() const;
  // Prints the rows of `list`.
  void list(std::FILE* out) const;
  // Prints the rows of `info` for the last unit. Reads all units three times, as `info` does.
  void info(std::FILE* out) const;
  // Read what one copy of the properties of a unit, or of a path, reads.
  void unitProperties(std::uint64_t unit) const;
  void pathProperties(std::uint64_t unit, std::uint64_t path) const;

 private:
  struct Media {
    const ob::Dictionary* properties;
    DiskDescription description;
  };
  struct Unit {
    const ob::Dictionary* properties;
    std::vector<const ob::Dictionary*> paths;
    std::vector<SCSIPathStatistics> states;
    std::vector<const ob::Dictionary*> ports;
    std::vector<Media> media;
  };
  void readUnit(const Unit& unit, char* row, std::size_t size) const;
  void readPath(const Unit& unit, std::size_t path, char* row, std::size_t size) const;

  std::vector<Unit> units_;
};

}  // namespace tavrenix::bench
