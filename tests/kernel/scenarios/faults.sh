# shellcheck shell=busybox
# What goes wrong under the tool is told clearly; nothing hangs and nothing is lost.
start_udev
debug_units 2 2
maps_by_hand
unit=$(identifier mpatha)

dmsetup suspend mpatha
before=$(dmsetup table mpatha)
same "a suspended map: listed" 2 "$(list_facts | grep -c '^unit ')"
has "a suspended map: changing the algorithm" '^Unable to change algorithm: .' "$(set_algorithm mpatha RoundRobin)"
has "a suspended map: disabling a path" '^Unable to disable path: .' "$(set_path mpatha sda -d)"
same "a suspended map: its table" "$before" "$(dmsetup table mpatha)"
same "a suspended map: no table waits" None "$(dmsetup info -c --noheadings -o tables_loaded mpatha | sed 's/^Live$/None/')"
dmsetup resume mpatha
same "a resumed map: changing the algorithm" "" "$(set_algorithm mpatha RoundRobin)"
same "a resumed map: set" "Modified Round Robin" "$(algorithm_of mpatha)"

# Groups of different selectors: no algorithm is the map's, and a change makes one of them.
differing_groups() {
  echo "0 16384 multipath 0 0 2 1 round-robin 0 1 1 $1 1 queue-length 0 1 1 $2 1" | dmsetup reload mpatha
  dmsetup resume mpatha
}
# shellcheck disable=SC2046 # the two numbers are words
differing_groups $(paths_of mpatha | cut -d' ' -f2)
same "groups that differ: selectors" "queue-length*1 round-robin*1" "$(selectors_of mpatha | paste -sd ' ')"
same "groups that differ: listed" 2 "$(list_facts | grep -c '^unit ')"
same "groups that differ: changing the algorithm" "" "$(set_algorithm mpatha LeastIO)"
same "groups that differ: set" "queue-length*2" "$(selectors_of mpatha)"

# A path's disk goes away and comes back while the tool works: each run ends, and says nothing but what it may: that it
# was refused, or that the counters of a disk that had been there went with it.
(
  for round in 1 2 3 4 5 6; do
    echo 1 >/sys/block/sda/device/delete
    sleep 0.3
    echo '- - -' >/sys/class/scsi_host/host0/scan
    sleep 0.3
  done
  touch /tmp/rounds.over
) 2>/dev/null &
runs=0
: >/tmp/out
while [ ! -e /tmp/rounds.over ]; do
  for algorithm in LeastIO LeastBytes; do
    tool modify lun -i "$unit" -a $algorithm >>/tmp/out 2>&1 || echo "status $?" >>/tmp/out
    tool info -i "$unit" >/tmp/info 2>&1 || echo "status $?" >>/tmp/out
    runs=$((runs + 2))
  done
done
say "$runs runs while a disk came and went; told: $(sort /tmp/out | uniq -c | tr '\n' '|')"
complaint='^sysctlbyname failed to get stats block: -1$'
same "a disk that comes and goes: nothing told but refusals" "" \
  "$(grep -vE '^Unable to (change algorithm: .+|find lun .+)$' /tmp/out | grep -v "$complaint")"
at_most "a disk that comes and goes: counters that went with it, in six rounds" 6 "$(grep -c "$complaint" /tmp/out)"
same "a disk that comes and goes: no map lost" 2 "$(maps | wc -l)"

# Every disk of a unit gone, its map still there.
udevadm settle
gone=$(path_id mpathb "$(first_disk mpathb)")
for disk in /sys/block/sd*; do
  case $(cat "$disk/device/wwid") in *"$(wwid_of mpathb | cut -c2-)") echo 1 >"$disk/device/delete" ;; esac
done
udevadm settle
tool list >/tmp/out
same "no disk left: status of list" 0 $?
same "no disk left: listed" 1 "$(awk -f /tests/report.awk /tmp/out | grep -c "^unit $(identifier mpathb)|mpathb|")"
before=$(dmsetup table mpathb | tr ' ' '\n' | grep -c :)
set_algorithm mpathb RoundRobin >/tmp/out
has "no disk left: the algorithm changes or is refused" '^(Unable to change algorithm: .+)?$' "$(cat /tmp/out)"
same "no disk left: the algorithm is set, or it said so" "$([ -s /tmp/out ] && echo service-time || echo round-robin)*1" "$(selectors_of mpathb)"
has "no disk left: a path that was there a moment ago" '^Unable to find path .' \
  "$(tool modify path -l "$(identifier mpathb)" -i "$gone" -d)"
same "no disk left: nothing lost from the table" "$before" "$(dmsetup table mpathb | tr ' ' '\n' | grep -c :)"

# A map without any path in its table.
unit=$(identifier mpathb)
dmsetup remove mpathb
has "a unit that was there a moment ago" '^Unable to find lun .' "$(tool modify lun -i "$unit" -a LeastIO)"
echo "0 16384 multipath 0 0 0 0" | dmsetup create empty -u mpath-3600a0b80001122334455667788990aab
udevadm settle
same "no path in the table: listed" 1 "$(list_facts | grep -c '^unit 600A0B80001122334455667788990AAB|empty|')"
same "no path in the table: paths shown" "" "$(path_facts empty)"
has "no path in the table: changing the algorithm" '^Unable to change algorithm: .' "$(set_algorithm empty RoundRobin)"
