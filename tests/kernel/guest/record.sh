# shellcheck shell=busybox
# Copies what this machine says about its disks and maps, so that it can be read again elsewhere without a machine.

# record NAME: /tmp/keep/NAME.tar.gz with sys/, run/udev/data/, and what dmsetup and multipath print.
record() {
  local to=/tmp/recorded/$1 entry
  mkdir -p "$to/run/udev"
  cp -a /run/udev/data "$to/run/udev/"
  rm -f "$to"/run/udev/data/[cn]*
  dmsetup table >"$to/dmsetup.table"
  dmsetup status >"$to/dmsetup.status"
  dmsetup info -c >"$to/dmsetup.info"
  multipath -ll >"$to/multipath.ll" 2>/dev/null
  copy_attribute /sys/kernel/uevent_seqnum "$to"
  for entry in /sys/block/* /sys/class/scsi_host/* /sys/class/scsi_device/* /sys/class/scsi_disk/* /sys/dev/block/*; do
    copy_link "$entry" "$to"
    copy_device "$(readlink -f "$entry")" "$to"
  done
  find "$to" -name .copied -exec rmdir {} +
  tar -C "$to" -czf "/tmp/keep/$1.tar.gz" .
}

# An attribute's size in sysfs is not its length, so its bytes are read and written, and what cannot be read is left out.
copy_attribute() {
  mkdir -p "$2$(dirname "$1")"
  cat "$1" >"$2$1" 2>/dev/null || rm -f "$2$1"
}

copy_link() {
  mkdir -p "$2$(dirname "$1")"
  ln -sfn "$(readlink "$1")" "$2$1"
}

# copy_device FOLDER ROOT: its attributes, its folders of interest, and the same for everything above it.
copy_device() {
  local at=$1 root=$2 entry
  while [ "$at" != /sys/devices ]; do
    [ ! -d "$root$at/.copied" ] || return 0
    mkdir -p "$root$at/.copied"
    copy_folder "$at" "$root"
    for entry in dm slaves holders; do
      [ ! -d "$at/$entry" ] || copy_folder "$at/$entry" "$root"
    done
    at=$(dirname "$at")
  done
}

copy_folder() {
  local entry
  mkdir -p "$2$1"
  for entry in "$1"/*; do
    if [ -L "$entry" ]; then
      copy_link "$entry" "$2"
    elif [ -f "$entry" ] && [ -r "$entry" ]; then
      copy_attribute "$entry" "$2"
    fi
  done
}
