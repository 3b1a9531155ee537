# shellcheck shell=busybox
# Every kind of designator that a map's uuid can carry becomes the unit's identifier.
# multipath's own udev rules would fail the paths of a map whose name is not theirs, so they stay away.
rm /lib/udev/rules.d/*mpath*.rules /lib/udev/rules.d/*multipath*.rules
start_udev
debug_units 1 2
for wwid in 3600a0b80001122334455667788990aab 20011223344556677 8iqn.2026-11.example:store.7 1STORE_Unit_number_9; do
  table_of "$(wwids)" round-robin | dmsetup create "a-rather-long-name-$wwid" -u "mpath-$wwid"
  udevadm settle
  same "a unit named $wwid: failed paths" 0 "$(failed_paths "$(maps)")"
  check_agreement "a unit named $wwid"
  dmsetup remove "a-rather-long-name-$wwid"
done
