// A registry image: the whole state of a simulated host, as one JSON document.
#pragma once

#include <optional>
#include <vector>

#include "lab/image/image_entry.hpp"
#include "runtime/ordered_map.hpp"

namespace tavrenix::lab {

// A plain value. It keeps the document and the entries that were read from it. A change changes
// both, so they never differ.
//
// Thread safety: an image that no thread changes may be read on any thread.
class Image {
 public:
  // NOLINTNEXTLINE(bugprone-exception-escape): a null document allocates nothing
  Image() = default;
  // Returns the image in the text. Errors: throws ImageError if the text is no valid image.
  static Image parse(std::string_view text);
  // Returns the document, laid out for a person to read. parse() reads the same image from it.
  std::string text() const { return printJSON(document_); }

  std::uint32_t generation() const noexcept { return generation_; }
  std::uint32_t effectiveUser() const noexcept { return effectiveUser_; }
  // Returns null if the image names none.
  const ob::Ref<const ob::String>& kernelRelease() const noexcept { return kernelRelease_; }
  const Classes& classes() const noexcept { return classes_; }
  // Returns the entries in the order of the file.
  const std::vector<ImageEntry>& entries() const noexcept { return entries_; }
  // Returns the entry of that ID, or null.
  const ImageEntry* find(EntryID id) const noexcept;
  // Returns the positions of all entries in entries(), every parent before its children, and
  // otherwise in the order of the file.
  const std::vector<std::size_t>& parentsFirst() const noexcept { return parentsFirst_; }

  void setGeneration(std::uint32_t generation);
  // Removes the first of "writeStatuses" and returns it, or returns nothing if there is none.
  std::optional<KernelStatus> takeWriteStatus();
  // REQUIRES: entry is one of this image's; value is a property-list value.
  void setProperty(const ImageEntry& entry, const std::string& name, const Json& value);
  // REQUIRES: entry is one of this image's and has statistics.
  void setPathState(const ImageEntry& entry, std::uint8_t state);

 private:
  void readEntries(const Json& json, const Place& place);
  void orderParentsFirst(const Place& place);
  std::size_t position(const ImageEntry& entry) const noexcept {
    return static_cast<std::size_t>(&entry - entries_.data());
  }

  Json document_;
  std::uint32_t generation_ = 0;
  std::uint32_t effectiveUser_ = 0;
  ob::Ref<const ob::String> kernelRelease_;
  Classes classes_;
  std::vector<KernelStatus> writeStatuses_;
  std::vector<ImageEntry> entries_;
  ob::NumberMap<std::size_t> positions_;
  std::vector<std::size_t> parentsFirst_;
};

}  // namespace tavrenix::lab
