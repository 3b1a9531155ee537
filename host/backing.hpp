// The small interface that each kind of host implements. BackedRegistry makes the whole device
// registry from it.
//
// Functions take an entry by its ID. The entry may be gone when they are called.
// Errors: a status other than kSuccess is the host's own number. Nothing is thrown but
// std::bad_alloc.
// Thread safety: every function may be called on any thread at any time. Only calls of present()
// never overlap, because Announcements makes one round at a time.
#pragma once

#include <string_view>
#include <vector>

#include "host/registry.hpp"

namespace tavrenix {

class Announcements;

using Entries = std::vector<EntryID>;

// An entry and its class, which stays known after the entry has gone.
struct Entry {
  EntryID id = 0;
  std::string_view className;  // lives as long as the backing
};

class Backing {
 public:
  virtual ~Backing() = default;

  // Returns true if the entry is there.
  virtual bool has(EntryID entry) = 0;
  // Returns all entries whose class is className or derives from it.
  virtual Result<Entries> entriesOfClass(std::string_view className) = 0;
  // Returns the relatives that `options` (kIterate...) choose, without the entry itself, each once:
  // children depth first, parents level by level.
  virtual Result<Entries> relatives(EntryID entry, std::uint32_t options) = 0;
  // Returns the entry's class. Its text lives as long as the backing. Returns an empty text if the
  // class of an entry that is gone is not known.
  virtual std::string_view classOf(EntryID entry) = 0;
  // Returns true if className is `base` or derives from it.
  virtual bool isKindOf(std::string_view className, std::string_view base) = 0;

  // Returns a snapshot of all properties, or null if the entry is gone.
  virtual ob::Ref<const ob::Dictionary> properties(EntryID entry) = 0;
  // Returns one property, or null.
  virtual ob::Ref<const ob::Object> property(EntryID entry, const ob::String& name) = 0;
  // Carries out a write of a property and returns the driver's answer.
  virtual KernelStatus carryOut(EntryID entry, const ob::String& name, const ob::Object& value) = 0;

  // Announces every change of the storage from now on: by Announcements::announce, or by arrived
  // and departed. Called when the first notification port is made. Returns false if the host cannot
  // notice changes.
  // Ownership: `announcements` lives until stopListening has returned.
  virtual bool startListening(Announcements& announcements) = 0;
  // Called when the last notification port is destroyed.
  virtual void stopListening() = 0;

  // The steps of a round (see Announcements).

  // Reads the storage again and returns all entries whose arrivals and departures are announced.
  virtual Result<std::vector<Entry>> present() = 0;
  // Answers clients with the generation that they saw last, until publish() returns true. A host
  // need not do this if it shows departed entries, and the old generation, until publish().
  virtual void holdGeneration() {}
  // Shows clients the entries that present() returned last, and their generation. Returns false,
  // and shows nothing new, if the storage has changed since: present() must be called again.
  virtual bool publish() = 0;
};

}  // namespace tavrenix
