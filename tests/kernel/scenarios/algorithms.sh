# shellcheck shell=busybox
# Each algorithm is set from each other one, under load, on maps of every shape; nothing but the selector changes.
start_udev
debug_units 1 2
wwid=$(wwids)

# From round-robin, these steps go once from each algorithm to each other.
steps="LeastIO:queue-length RoundRobin:round-robin LeastBytes:service-time LeastIO:queue-length
  LeastBytes:service-time RoundRobin:round-robin"

udevadm monitor --udev --property --subsystem-match=block >/tmp/events &

# walk NAME FEATURES GROUPS FAILED: FAILED is a disk whose path fails beforehand and stays so, or nothing.
walk() {
  local step selector
  table_of "$wwid" round-robin "$2" "$3" | dmsetup create mpatha -u "mpath-$wwid"
  udevadm settle
  [ -z "$4" ] || fail_path mpatha "$4"
  start_load /dev/mapper/mpatha
  for step in $steps; do
    selector=${step#*:}
    same "$1, ${step%:*}: message" "" "$(set_algorithm mpatha "${step%:*}")"
    same "$1, ${step%:*}: table" "$(table_of "$wwid" "$selector" "$2" "$3")" "$(dmsetup table mpatha | sed 's/ *$//')"
    same "$1, ${step%:*}: read back" "$(shown_selector "$selector")" "$(algorithm_of mpatha)"
    [ -z "$4" ] || same "$1, ${step%:*}: the failed path" F "$(path_state mpatha "$4")"
    same "$1, ${step%:*}: failed paths" "$([ -z "$4" ] && echo 0 || echo 1)" "$(failed_paths mpatha)"
    load_goes_on "$1, ${step%:*}: the load goes on"
  done
  stop_load "$1"
  udevadm settle
  dmsetup remove mpatha
}

walk "plain" 0 1 ""
walk "queueing without paths" "1 queue_if_no_path" 1 ""
walk "a failed path" 0 1 sda
walk "two groups" 0 2 ""

# An event of a table's change that lacks the multipath flag makes udev scan the map anew.
sleep 1
kill %1 2>/dev/null
wait %1
awk 'BEGIN { RS = "" } /ACTION=change/ && /DM_COOKIE=/ && /DM_NAME=mpatha/ && !/DM_SUBSYSTEM_UDEV_FLAG0=1/ { n++ } END { print n + 0 }' \
  /tmp/events >/tmp/scans
# Each of the four maps is scanned once, when it is made.
same "scans by udev" 4 "$(cat /tmp/scans)"
