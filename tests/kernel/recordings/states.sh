# shellcheck shell=busybox
# Four units on two hosts of different access states, mapped without the daemon, by three selectors and in two groups.
start_udev
debug_units 4 2
selectors="round-robin queue-length service-time service-time"
letter=a
for wwid in $(wwids); do
  selector=${selectors%% *}
  selectors=${selectors#* }
  groups=1
  [ "$letter" != d ] || groups=2
  table_of "$wwid" "$selector" "1 queue_if_no_path" "$groups" | dmsetup create "mpath$letter" -u "mpath-$wwid"
  letter=$(echo "$letter" | tr 'a-y' 'b-z')
done
udevadm settle
take_offline "$(first_disk mpathc)"
fail_path mpathb "$(disks_of mpathb | tail -n 1)"
udevadm trigger --settle --subsystem-match=block
same "maps" 4 "$(maps | wc -l)"
same "failed paths" 2 "$(for map in $(maps); do paths_of "$map"; done | grep -c ' F$')"
record states
