# shellcheck shell=busybox
# Maps made by hand: reports, changes under load, and every kind of name.
rules=/lib/udev/rules.d # multipath's own would fail the paths of a map whose name is not theirs
mkdir /tmp/rules && mv $rules/*mpath*.rules $rules/*multipath*.rules /tmp/rules

start_udev
debug_units 4 2

# Every kind of designator that the uuid of a map can carry, and characters that device-mapper writes as \x20 and \x2c.
table_of "$(wwids | head -n 1)" round-robin >/tmp/table
for wwid in 3600a0b80001122334455667788990aab 20011223344556677 8iqn.2026-11.example:store.7,t,0x0001 1STORE_Unit_number_9; do
  dmsetup create "a-rather-long-name-$wwid" -u "mpath-$wwid" </tmp/table
  settle
  check_agreement "a unit named $wwid"
  dmsetup remove "a-rather-long-name-$wwid"
done

maps_by_hand queue-length
cat /sys/block/sd*/stat >/tmp/io.before
for map in $(maps); do info_of "$map"; done >/tmp/out
same "nothing is read from a disk by info" "$(cat /tmp/io.before)" "$(cat /sys/block/sd*/stat)"
fail_path mpathb "$(first_disk mpathb)"
take_offline "$(first_disk mpathc)"
check_agreement "a failed and an offline path"
change_paths mpatha 0

# A batch count that the kernel does not take is refused; the table stays as it was.
unit=$(identifier mpathd)
set_algorithm mpathd RoundRobin
before=$(dmsetup table mpathd)
has "a count of 16: message" '^Unable to (change )?batch count: .' "$(tool modify lun -i "$unit" -b 16)"
same "a count of 16: table" "$before" "$(dmsetup table mpathd)"

# Maps of every shape get each algorithm under load. Only the selector changes.
wwid=$(wwid_of mpatha)
dmsetup remove_all
udevadm monitor --udev --property --subsystem-match=block >/tmp/events &
monitor=$!

# walk NAME FEATURES GROUPS FAILED ALGORITHM:SELECTOR...: FAILED is a disk whose path fails beforehand and stays so, or -.
walk() {
  local name=$1 features=$2 groups=$3 failed=$4 step
  shift 4
  table_of "$wwid" round-robin "$features" "$groups" | dmsetup create mpatha -u "mpath-$wwid"
  settle
  [ "$failed" = - ] || fail_path mpatha "$failed"
  start_load /dev/mapper/mpatha
  for step; do
    same "$name, $step: message" "" "$(set_algorithm mpatha "${step%:*}")"
    same "$name, $step: table" "$(table_of "$wwid" "${step#*:}" "$features" "$groups")" "$(dmsetup table mpatha | sed 's/ *$//')"
    same "$name, $step: read back" "$(shown_selector "${step#*:}")" "$(algorithm_of mpatha)"
    same "$name, $step: failed paths" "$([ "$failed" = - ] && echo 0 || echo 1)" "$(failed_paths mpatha)"
    load_goes_on "$name, $step"
  done
  stop_load "$name"
  settle
  dmsetup remove mpatha
}
steps="LeastIO:queue-length RoundRobin:round-robin LeastBytes:service-time"
# shellcheck disable=SC2086 # steps are words
{
  walk "plain" 0 1 - $steps LeastIO:queue-length LeastBytes:service-time RoundRobin:round-robin
  walk "queueing without paths" "1 queue_if_no_path" 1 - $steps
  walk "a failed path" 0 1 "$(disks | awk -v wwid="$wwid" '$1 == wwid { print $2; exit }')" $steps
  walk "two groups" 0 2 - $steps
}
kill $monitor
wait $monitor
# Each of the four maps is scanned once, when it is made. A change without the driver's flag makes udev scan it anew.
same "scans by udev" 4 "$(awk 'BEGIN { RS = "" }
  /ACTION=change/ && /DM_COOKIE=/ && /DM_NAME=mpatha/ && !/DM_SUBSYSTEM_UDEV_FLAG0=1/ { n++ } END { print n + 0 }' /tmp/events)"
