// The entries of a Linux machine. They are not stored: each request is answered from the machine.
#pragma once

#include "host/announcements.hpp"
#include "linux/registry/entry_properties.hpp"
#include "linux/registry/registry_requests.hpp"
#include "linux/registry/storage_listener.hpp"
#include "linux/topology/tree.hpp"

namespace tavrenix::sys {

class LinuxBacking final : public Backing {
 public:
  // Ownership: borrows the machine and the daemon, which outlive the backing.
  LinuxBacking(Machine& machine, PathDaemon& daemon, StorageListener::Opener opener)
      : machine_(machine),
        properties_(machine),
        requests_(machine, daemon),
        listener_(std::move(opener)) {}

  // Returns the generation that clients see: the last published one if clients listen, otherwise
  // the machine's own. While the generation is held, returns what the previous call returned.
  std::uint32_t generation() OB_EXCLUDES(mutex_);

  bool has(EntryID entry) override { return machine_.exists(entry); }
  Result<Entries> entriesOfClass(std::string_view className) override;
  Result<Entries> relatives(EntryID entry, std::uint32_t options) override;
  std::string_view classOf(EntryID entry) override;
  bool isKindOf(std::string_view className, std::string_view base) override;
  ob::Ref<const ob::Dictionary> properties(EntryID entry) override;
  ob::Ref<const ob::Object> property(EntryID entry, const ob::String& name) override;
  // Carries out writes to "Properties" of a logical unit, and refuses others. Returns once the
  // driver has carried out the request, or once the driver's state is again as it was.
  // Errors: the negative error number of the cause.
  KernelStatus carryOut(EntryID entry, const ob::String& name, const ob::Object& value) override;

  bool startListening(Announcements& announcements) override OB_EXCLUDES(mutex_);
  void stopListening() override OB_EXCLUDES(mutex_);
  // Returns units that have a table, and paths.
  Result<std::vector<Entry>> present() override OB_EXCLUDES(mutex_);
  void holdGeneration() override OB_EXCLUDES(mutex_);
  bool publish() override OB_EXCLUDES(mutex_);

 private:
  // If the storage changes faster than it can be listed, every kMostLooks-th list is published all
  // the same.
  static constexpr int kMostLooks = 10;

  Machine& machine_;
  EntryProperties properties_;
  Requests requests_;
  StorageListener listener_;
  ob::Mutex mutex_;
  Announcements* announcements_ OB_GUARDED_BY(mutex_) = nullptr;
  std::optional<std::uint32_t> published_ OB_GUARDED_BY(mutex_);
  bool held_ OB_GUARDED_BY(mutex_) = false;
  std::uint32_t lastSeen_ OB_GUARDED_BY(mutex_) = 0;  // the generation that a client saw last
  std::uint32_t lookedAt_ OB_GUARDED_BY(mutex_) = 0;  // the generation of the last list
  int looks_ OB_GUARDED_BY(mutex_) = 0;               // number of lists since the last publication
};

}  // namespace tavrenix::sys
