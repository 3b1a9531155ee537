# shellcheck shell=busybox
# Paths and units come and go while examples/watch.c listens: each change is told once. First with the kernel's own
# events, then with those that udev sends on, and then where the daemon makes the maps.
modprobe -a dm_mod dm_multipath dm_service_time scsi_dh_alua sd_mod
export DM_DISABLE_UDEV=1
debug_units 2 2
maps_by_hand
changes_by_hand "kernel's events"

# Events of the kernel that some socket had no room for.
lost_events() { awk '$2 == 15 { drops += $9 } END { print drops + 0 }' /proc/net/netlink; }

# More events than the socket holds while the watch is stopped, the one that matters among those lost.
kill -STOP "$watcher"
rounds=0
until [ "$(lost_events)" -gt 0 ] || [ $rounds -eq 40 ]; do
  for i in $(seq 1 500); do echo change >"/sys/block/dm-0/uevent"; done
  rounds=$((rounds + 1))
done
remove_path mpatha
has "more events than the socket holds: some were lost" '^[1-9]' "$(lost_events)"
kill -CONT "$watcher"
told "more events than the socket holds" "-$path"
stop_watch "kernel's events"
dmsetup remove mpatha
add_disk 4

unset DM_DISABLE_UDEV
start_udev
dmsetup remove mpathb
maps_by_hand
changes_by_hand "udev's events"
stop_watch "udev's events"

dmsetup remove_all
start_daemon 2
start_watch
told "daemon: what is present" "$(unit_lines + mpatha; unit_lines + mpathb)"
remove_path mpatha
told "daemon: a path is removed" "-$path"
add_disk 4
told "daemon: the path is added again" "+$path"
lines=$(unit_lines - mpathb)
multipathd remove map mpathb >/dev/null
told "daemon: a unit is removed" "$lines"
multipathd reconfigure >/dev/null
until_true 60 map_count_is 2
told "daemon: the unit is added again" "$(unit_lines + mpathb)"
stop_watch "daemon"
