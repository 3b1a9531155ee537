// The in-memory backing of the device registry. Its owner fills and changes it.
//
// Thread safety: every function may be called on any thread. The write handler is called without a
// lock, so it may call any function.
#pragma once

#include <functional>
#include <utility>

#include "host/backed_registry.hpp"
#include "host/memory/memory_tree.hpp"

namespace tavrenix::memory {

// The status of a question about an entry that is not there.
inline constexpr KernelStatus kNoSuchObject = -536870206;

class MemoryRegistry : public Backing, public BackedRegistry {
 public:
  MemoryRegistry() : BackedRegistry(static_cast<Backing&>(*this)) {}

  // Carries out a write of a property and returns its status. Without a handler, the registry
  // stores the value as the property.
  using WriteHandler =
      std::function<KernelStatus(EntryID entryID, const ob::String& name, const ob::Object& value)>;

  // These do what the functions of Tree do. Arrivals and departures are announced.
  bool defineClass(const std::string& className, const std::string& base);
  bool addEntry(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                ob::Ref<const ob::Dictionary> properties);
  bool removeEntry(EntryID id);
  bool replaceParents(EntryID id, const std::vector<EntryID>& parents);
  // Returns false if the entry is not there.
  bool replaceProperties(EntryID id, ob::Ref<const ob::Dictionary> properties);
  void setWriteHandler(WriteHandler handler);

  bool has(EntryID entry) override;
  Result<Entries> entriesOfClass(std::string_view className) override;
  Result<Entries> relatives(EntryID entry, std::uint32_t options) override;
  std::string_view classOf(EntryID entry) override;
  bool isKindOf(std::string_view className, std::string_view base) override;
  ob::Ref<const ob::Dictionary> properties(EntryID entry) override;
  ob::Ref<const ob::Object> property(EntryID entry, const ob::String& name) override;
  KernelStatus carryOut(EntryID entry, const ob::String& name, const ob::Object& value) override;
  bool startListening(Announcements& announcements) override;
  void stopListening() override;
  Result<std::vector<Entry>> present() override;
  bool publish() override { return true; }

  // Holds announcements back until the end of its scope, and then makes them in their order. A
  // driver changes its generation before that, so that a client that receives an arrival scans.
  class HeldNotifications {
   public:
    explicit HeldNotifications(MemoryRegistry& registry);
    ~HeldNotifications();
    HeldNotifications(const HeldNotifications&) = delete;
    HeldNotifications& operator=(const HeldNotifications&) = delete;

   private:
    MemoryRegistry& registry_;
  };
  // Returns true if the clients have read all of their notifications.
  bool notificationsAreDelivered() { return announcements().areDelivered(); }

 protected:
  // Returns the name of a class, which is made if it is new. The text lives as long as the
  // registry.
  std::string_view classNamed(const std::string& name) OB_EXCLUDES(mutex_);

 private:
  struct Change {
    Entry entry;
    bool arrival = false;
  };
  void announce(const Change& change) OB_EXCLUDES(mutex_);

  ob::Mutex mutex_;
  Tree tree_ OB_GUARDED_BY(mutex_);
  WriteHandler writeHandler_ OB_GUARDED_BY(mutex_);
  Announcements* listener_ OB_GUARDED_BY(mutex_) = nullptr;
  std::size_t holds_ OB_GUARDED_BY(mutex_) = 0;
  std::vector<Change> held_ OB_GUARDED_BY(mutex_);
};

}  // namespace tavrenix::memory
