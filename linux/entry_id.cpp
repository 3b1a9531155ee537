#include "linux/entry_id.hpp"

namespace tavrenix::sys {

std::string folderOf(EntryName name) {
  switch (name.kind) {
    case Kind::kUnit:
    case Kind::kPath:
    case Kind::kMedium:
      return "/sys/dev/block/" + name.device().text();
    case Kind::kHost:
      return "/sys/class/scsi_host/host" + std::to_string(name.number);
    case Kind::kNone:
      break;
  }
  return "/sys/none";
}

}  // namespace tavrenix::sys
