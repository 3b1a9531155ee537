// A registry image: the whole state of a simulated host, as one JSON document.
//
// A plain value without locks. The document and what is read out of it never differ.
#pragma once

#include <optional>
#include <vector>

#include "lab/classes.hpp"
#include "model/disks.hpp"
#include "model/tunable.hpp"
#include "runtime/ordered_map.hpp"

namespace tavrenix::lab {

struct ImageEntry {
  EntryID id = 0;
  std::string className;
  bool isPath = false;                           // its class is, or derives from, that of paths
  std::vector<EntryID> parents;                  // each an entry of the image, none twice
  ob::Ref<const ob::Dictionary> properties;      // never none
  std::optional<SCSIPathStatistics> statistics;  // the state byte counts for a path only
  std::optional<DiskDescription> disk;
};

class Image {
 public:
  Image();
  // Throws ImageError, which names the place and the fault, unless text is a whole and sound image.
  static Image parse(std::string_view text);
  std::string text() const { return printJSON(document_); }

  std::uint32_t generation() const noexcept { return generation_; }
  std::uint32_t effectiveUser() const noexcept { return effectiveUser_; }
  const Classes& classes() const noexcept { return classes_; }
  // In the order of the file.
  const std::vector<ImageEntry>& entries() const noexcept { return entries_; }
  // The entry of that ID, or null.
  const ImageEntry* find(EntryID id) const noexcept;
  // Positions in entries(), every parent before its children and otherwise in the order of the
  // file.
  const std::vector<std::size_t>& parentsFirst() const noexcept { return parentsFirst_; }

  void setGeneration(std::uint32_t generation);
  // Takes the first of the statuses that wait for a write, if any does.
  std::optional<KernelStatus> takeWriteStatus();
  // entry is one of this image's. value must be a property-list value.
  void setProperty(const ImageEntry& entry, const std::string& name, const Json& value);
  // entry has statistics.
  void setPathState(const ImageEntry& entry, std::uint8_t state);

 private:
  void readEntries(const Json& json, const Place& place);
  void expectParents(const Place& place) const;
  std::size_t position(const ImageEntry& entry) const noexcept {
    return static_cast<std::size_t>(&entry - entries_.data());
  }

  Json document_;
  std::uint32_t generation_ = 0;
  std::uint32_t effectiveUser_ = 0;
  Classes classes_;
  std::vector<KernelStatus> writeStatuses_;
  std::vector<ImageEntry> entries_;
  ob::NumberMap<std::size_t> positions_;
  std::vector<std::size_t> parentsFirst_;
};

}  // namespace tavrenix::lab
