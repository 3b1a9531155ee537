# shellcheck shell=busybox
# Faults below the tool: it reports them clearly, does not hang, and loses no request.
start_udev
debug_units 2 2
maps_by_hand
unit=$(identifier mpatha)

dmsetup suspend mpatha
has "a suspended map: changing the algorithm" '^Unable to change algorithm: .' "$(set_algorithm mpatha RoundRobin)"
has "a suspended map: disabling a path" '^Unable to disable path: .' "$(set_path mpatha sda -d)"
dmsetup resume mpatha
same "a resumed map: changing the algorithm" "" "$(set_algorithm mpatha RoundRobin)"

# A path's disk comes and goes while the tool works. The tool may only report that a change was refused or that the
# counters of a disk are gone.
(
  for round in 1 2 3 4 5 6; do
    echo 1 >/sys/block/sda/device/delete
    sleep 0.3
    echo '- - -' >/sys/class/scsi_host/host0/scan
    sleep 0.3
  done
  touch /tmp/rounds.over
) 2>/dev/null &
while [ ! -e /tmp/rounds.over ]; do
  for algorithm in LeastIO LeastBytes; do
    tool modify lun -i "$unit" -a $algorithm || echo "status $?"
    tool info -i "$unit" >/tmp/info || echo "status $?"
  done
done >/tmp/out 2>&1
same "a disk that comes and goes: said" "" \
  "$(grep -vE '^(Unable to (change algorithm: .+|find lun .+)|sysctlbyname failed to get stats block: -1)$' /tmp/out)"
same "a disk that comes and goes: no map lost" 2 "$(maps | wc -l)"

# Every disk of a unit gone, its map still there.
settle
gone=$(path_id "$(first_disk mpathb)")
for disk in $(disks_of mpathb); do echo 1 >"/sys/block/$disk/device/delete"; done
settle
same "no disk left: listed" 1 "$(list_facts | grep -c "^unit $(identifier mpathb)|mpathb|")"
before=$(dmsetup table mpathb | tr ' ' '\n' | grep -c :)
set_algorithm mpathb RoundRobin >/tmp/out
has "no disk left: the algorithm changes or is refused" '^(Unable to change algorithm: .+)?$' "$(cat /tmp/out)"
same "no disk left: the algorithm is set, or it said so" "$([ -s /tmp/out ] && echo service-time || echo round-robin)*1" "$(selectors_of mpathb)"
has "no disk left: a path that has gone" '^Unable to find path .' "$(tool modify path -l "$(identifier mpathb)" -i "$gone" -d)"
same "no disk left: nothing lost from the table" "$before" "$(dmsetup table mpathb | tr ' ' '\n' | grep -c :)"
