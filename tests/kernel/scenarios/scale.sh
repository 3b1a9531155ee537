# shellcheck shell=busybox
# 64 units of four paths, and a thousand: how the tool's list stands beside others' in the same boot, and what it asks
# of the kernel. No udev and no daemon here: under emulation their work on 256 disks takes minutes.
modprobe -a dm_mod dm_multipath dm_service_time scsi_dh_alua sd_mod
debug_units 64 4

# make_maps UNITS: maps of four paths each over the disks there are; device-mapper lets maps share them.
# Request queues for a thousand maps would fill the memory, so these work on bios.
# A line for `dmsetup create --concise` holds sixteen of them, which is as much as it reads at once.
make_maps() {
  local line
  disks | awk -v units="$1" '
    { number[NR] = $3 }
    END {
      for (unit = 0; unit < units; unit++) {
        printf "unit%d,mpath-3600a0b8000000000000000000000%04d,,rw,", unit, unit
        printf "0 16384 multipath 2 queue_mode bio 0 1 1 service-time 0 4 2"
        for (path = 0; path < 4; path++) printf " %s 1 1", number[(unit * 4 + path) % NR + 1]
        printf "%s", (unit % 16 == 15 || unit == units - 1 ? "\n" : ";")
      }
    }' >/tmp/concise
  while read -r line; do
    echo "$line" | dmsetup create --concise
  done </tmp/concise
}

make_maps 64
same "maps" 64 "$(maps | wc -l)"

# milliseconds COMMAND...: of the best of three runs, from a clock of hundredths of a second.
milliseconds() {
  local run best=
  for run in 1 2 3; do
    took=$({ cat /proc/uptime; "$@" >/tmp/timed.out 2>&1; cat /proc/uptime; } | awk 'NR == 1 { from = $1 } END { print int(($1 - from) * 1000 + 0.5) }')
    if [ -z "$best" ] || [ "$took" -lt "$best" ]; then best=$took; fi
  done
  echo "$best"
}

own=$(milliseconds tavrenix list)
say "64 units of 4 paths: tavrenix list takes $own ms"
for other in "multipath -ll" "multipath -l" "lsblk" "dmsetup table"; do
  theirs=$(milliseconds $other)
  say "$other: $theirs ms, $(awk -v a="$theirs" -v b="$own" 'BEGIN { printf "%.2f", a / (b > 10 ? b : 10) }') times that"
done

strace -f -c -o /tmp/calls tavrenix list >/tmp/out
same "64 units listed" 64 "$(awk -f /tests/report.awk /tmp/out | grep -c '^unit ')"
calls=$(awk '$NF == "total" { print $4 }' /tmp/calls)
say "$calls system calls for 256 paths"
differ "system calls counted" "" "$calls"
at_most "system calls a path, in hundredths" 1200 $((${calls:-999999} * 100 / 256))

dmsetup remove_all
make_maps 1000
same "a thousand maps" 1000 "$(maps | wc -l)"
say "1000 units of 4 paths: tavrenix list takes $(milliseconds tavrenix list) ms, dmsetup table $(milliseconds dmsetup table) ms"
same "1000 units listed" 1000 "$(tool list | grep -cE '^ *[0-9]+ unit[0-9]+ ')" # the thousandth row is a column wider
