# shellcheck shell=busybox
# What examples/watch.c prints while storage changes, and what changes it.

# Starts the watch; its lines are compared as "+unit IDENTIFIER", "-path IDENTIFIER" and so on.
start_watch() {
  : >/tmp/watched
  expected=0
  tavrenix-watch >/tmp/watched 2>&1 &
  watcher=$!
}

stop_watch() {
  same "$1: the watch goes on to the end" "" "$(kill "$watcher" 2>&1)"
  wait "$watcher"
}

watched() {
  awk '
    { sign = /Disappeared/ ? "-" : /Appeared/ ? "+" : "?"; what = / Path / ? "path" : "unit"; print sign what, $NF }
  ' /tmp/watched
}

lines_are() { [ "$(wc -l </tmp/watched)" -ge "$1" ]; }

# told NAME LINES: since the last call exactly these lines have come, in any order, and nothing follows soon.
told() {
  local before=$expected
  expected=$((expected + $(echo "$2" | grep -c .)))
  until_true 20 lines_are "$expected"
  sleep 1
  same "$1" "$(echo "$2" | grep . | sort)" "$(watched | tail -n +$((before + 1)) | sort)"
  expected=$(wc -l </tmp/watched)
}

# unit_lines SIGN MAP: the lines of a unit with all its paths.
unit_lines() {
  echo "$1unit $(identifier "$2")"
  for disk in $(disks_of "$2"); do echo "$1path $(path_id "$2" "$disk")"; done
}

# remove_path MAP: its first disk; sets path to its line and removed to the host to be scanned for it.
remove_path() {
  local disk
  disk=$(first_disk "$1")
  path="path $(path_id "$1" "$disk")"
  removed=$(address_of "$disk" | cut -d: -f1)
  echo 1 >"/sys/block/$disk/device/delete"
}

# add_disk COUNT: scans the host of the disk last removed until there are so many disks.
add_disk() {
  echo '- - -' >"/sys/class/scsi_host/host$removed/scan"
  until_true 20 disk_count_is "$1"
}

# changes_by_hand NAME: on two units of two paths, mpatha and mpathb, whose maps were made by hand.
changes_by_hand() {
  local lines wwid table
  start_watch
  told "$1: what is present" "$(unit_lines + mpatha; unit_lines + mpathb)"

  remove_path mpatha
  told "$1: a path is removed" "-$path"
  add_disk 4
  told "$1: a disk that is in no map comes" ""
  table_of "$(wwid_of mpatha)" | dmsetup reload mpatha
  dmsetup resume mpatha
  told "$1: the path is added again" "+$path"
  echo change >/sys/block/dm-0/uevent
  dmsetup suspend mpatha
  dmsetup resume mpatha
  told "$1: events without a change" ""

  lines=$(unit_lines - mpathb)
  wwid=$(wwid_of mpathb)
  table=$(table_of "$wwid")
  dmsetup remove mpathb
  told "$1: a unit is removed" "$lines"
  dmsetup create mpathb -u "mpath-$wwid" --notable
  told "$1: a map without a table" ""
  echo "$table" | dmsetup load mpathb
  dmsetup resume mpathb
  told "$1: the unit is added again" "$(unit_lines + mpathb)"

  dmsetup rename mpathb other
  told "$1: a map is renamed" ""
  dmsetup rename other mpathb
}
