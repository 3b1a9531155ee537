// The floors: the same entries and the same rows by a plain loop, without objects, dictionaries or
// locks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "model/disks.hpp"
#include "model/memory/host.hpp"

namespace tavrenix::bench {

class Floor {
 public:
  // Looks the entries up once, outside what is measured.
  Floor(memory::MemoryHost& host, std::uint64_t units, std::uint64_t paths);

  // All that a first scan reads, and nothing of it kept.
  void scan() const;
  // The rows of `list`.
  void list(std::FILE* out) const;
  // The rows of `info` for the last unit: all units are read three times and one is reported.
  void info(std::FILE* out) const;
  // What one copy of a unit's, of a path's properties reads.
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
