# shellcheck shell=busybox
# Paths and units come and go while examples/watch.c listens: each change is reported once. First with the kernel's own
# events, then with those that udev sends on.

# Lines are compared as "+unit IDENTIFIER", "-path IDENTIFIER" and so on.
start_watch() {
  expected=0
  tavrenix-watch >/tmp/watched 2>&1 &
  watcher=$!
}

stop_watch() {
  same "$1: the watch goes on to the end" "" "$(kill "$watcher" 2>&1)"
  wait "$watcher"
}

lines_are() { [ "$(wc -l </tmp/watched)" -ge "$1" ]; }

# reported NAME LINES: passes if exactly these lines have come since the last call, in any order, and none follows soon.
reported() {
  local before=$expected
  expected=$((expected + $(echo "$2" | grep -c .)))
  until_true 30 lines_are "$expected"
  sleep 1
  same "$1" "$(echo "$2" | grep . | sort)" "$(tail -n +$((before + 1)) /tmp/watched |
    awk '{ print (/Disappeared/ ? "-" : "+") (/ Path / ? "path" : "unit"), $NF }' | sort)"
  expected=$(wc -l </tmp/watched)
}

# unit_lines SIGN MAP: prints the lines of a unit and of all its paths.
unit_lines() {
  echo "$1unit $(identifier "$2")"
  for disk in $(disks_of "$2"); do echo "$1path $(path_id "$disk")"; done
}

# remove_path MAP: removes the first disk of the map. Sets `path` to its line and `host` to its host.
remove_path() {
  local disk
  disk=$(first_disk "$1")
  path="path $(path_id "$disk")" host=$(address_of "$disk" | cut -d: -f1)
  echo 1 >"/sys/block/$disk/device/delete"
}

add_disk() {
  echo '- - -' >"/sys/class/scsi_host/host$host/scan"
  until_true 20 disk_count_is 4
}

# changes_by_hand NAME: on mpatha and mpathb, two paths each.
changes_by_hand() {
  local lines wwid
  start_watch
  reported "$1: what is present" "$(unit_lines + mpatha; unit_lines + mpathb)"
  remove_path mpatha
  reported "$1: a path is removed" "-$path"
  add_disk
  reported "$1: a disk that is in no map comes" ""
  table_of "$(wwid_of mpatha)" | dmsetup reload mpatha
  dmsetup resume mpatha
  reported "$1: the path is added again" "+$path"
  dmsetup suspend mpatha
  dmsetup resume mpatha
  reported "$1: events without a change" ""
  lines=$(unit_lines - mpathb) wwid=$(wwid_of mpathb)
  dmsetup remove mpathb
  reported "$1: a unit is removed" "$lines"
  dmsetup create mpathb -u "mpath-$wwid" --notable
  reported "$1: a map without a table" ""
  table_of "$wwid" | dmsetup load mpathb
  dmsetup resume mpathb
  reported "$1: the unit is added again" "$(unit_lines + mpathb)"
}

load_drivers
export DM_DISABLE_UDEV=1
debug_units 2 2
maps_by_hand
changes_by_hand "kernel's events"

# While the watch is stopped, more events come than the socket holds. The one that matters is among the lost ones.
lost_events() { awk '$2 == 15 { drops += $9 } END { print drops + 0 }' /proc/net/netlink; }
kill -STOP "$watcher"
rounds=0
until [ "$(lost_events)" -gt 0 ] || [ $rounds -eq 40 ]; do
  for i in $(seq 1 500); do echo change >"/sys/block/dm-0/uevent"; done
  rounds=$((rounds + 1))
done
remove_path mpatha
has "more events than the socket holds: some were lost" '^[1-9]' "$(lost_events)"
kill -CONT "$watcher"
reported "more events than the socket holds" "-$path"
stop_watch "kernel's events"
dmsetup remove_all
add_disk

unset DM_DISABLE_UDEV
start_udev
maps_by_hand
changes_by_hand "udev's events"
stop_watch "udev's events"
