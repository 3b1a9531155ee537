# shellcheck shell=busybox
# Changes while other callers change maps, signals come and other programs load tables. sda is disabled all the time.
start_udev
debug_units 1 2
maps_by_hand service-time
set_path mpatha sda -d
waiting() { dmsetup table --inactive mpatha | sed 's/ *$//'; }

# Four callers at a time: each change is made, or refused because the others take too long.
for round in 1 2 3 4 5 6 7 8; do
  for algorithm in RoundRobin LeastIO LeastBytes; do
    set_algorithm mpatha $algorithm >/tmp/out.$algorithm &
  done
  set_path mpatha sdb -e >/tmp/out.path
  set_path mpatha sda -d >>/tmp/out.path
  wait
  cat /tmp/out.*
  echo "sda $(path_state mpatha sda), waiting: $(waiting)"
done | sort | uniq -c >/tmp/rounds
same "four callers at a time" "8 sda F, waiting:" "$(sed 's/^ *//; s/ *$//' /tmp/rounds)"

# The kernel refuses to change the delay while a request waits, such as one of udev's.
set_delay() { echo "$1" >/sys/bus/pseudo/drivers/scsi_debug/delay; }

# cut_short SIGNAL ALGORITHM: sends the signal while the resume waits for a request of a slow disk. The seconds are those
# of the guest's clock: the request takes ten.
cut_short() {
  until_true 60 set_delay 2500
  dd if=/dev/mapper/mpatha of=/dev/null bs=4096 count=1 iflag=direct 2>/dev/null &
  sleep 1
  tavrenix modify lun -i "$(identifier mpatha)" -a "$2" &
  sleep 3
  kill "-$1" $!
  wait
  until_true 60 set_delay 1
}
set_algorithm mpatha LeastBytes
cut_short TERM LeastIO
same "TERM: the selector" "queue-length*1" "$(selectors_of mpatha)"
same "TERM: a waiting table" "" "$(waiting)"
same "TERM: sda" F "$(path_state mpatha sda)"
cut_short KILL RoundRobin
same "KILL: the selector" "queue-length*1" "$(selectors_of mpatha)"
has "KILL: a waiting table" round-robin "$(waiting)"
same "KILL: the next change" "" "$(set_path mpatha sdb -e)"
same "KILL: a waiting table, then" "" "$(waiting)"

table_of "$(wwids)" round-robin 0 2 | dmsetup reload mpatha # two groups: no change of a selector
before=$(waiting)
has "another program's table: the algorithm" '^Unable to change algorithm: .*result -114' "$(set_algorithm mpatha LeastIO)"
has "another program's table: a path" '^Unable to disable path: .' "$(set_path mpatha sdb -d)"
same "another program's table: still waits" "$before" "$(waiting)"
