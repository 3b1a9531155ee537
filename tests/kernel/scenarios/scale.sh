# shellcheck shell=busybox
# 64 units of four paths: how the tool's list stands beside others' in the same boot, and what it asks of the kernel.
# udev's usual rules start several programs for each of 256 disks, which takes minutes under emulation; the daemon
# needs the disks' names only, and device-mapper its own two rules.
find /lib/udev/rules.d -name '*.rules' ! -name 55-dm.rules ! -name 95-dm-notify.rules -delete
echo 'SUBSYSTEM=="block", KERNEL=="sd*", PROGRAM="/bin/busybox sed s/naa./3/ /sys%p/device/wwid", ENV{ID_SERIAL}="%c"' \
  >/lib/udev/rules.d/60-names.rules
start_udev
debug_units 64 4
say "the disks are there after $(cut -d' ' -f1 /proc/uptime) s"
start_daemon 64
say "the maps are there after $(cut -d' ' -f1 /proc/uptime) s"

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
for other in "multipath -ll" "multipath -l" "multipathd show topology" "lsblk" "dmsetup table"; do
  theirs=$(milliseconds $other)
  say "$other: $theirs ms, $(awk -v a="$theirs" -v b="$own" 'BEGIN { printf "%.2f", a / (b > 10 ? b : 10) }') times that"
done

strace -f -c -o /tmp/calls tavrenix list >/tmp/out
same "64 units listed" 64 "$(awk -f /tests/report.awk /tmp/out | grep -c '^unit ')"
calls=$(awk '$NF == "total" { print $(NF - 2) ~ /^[0-9]+$/ && NF > 4 ? $(NF - 2) : $(NF - 1) }' /tmp/calls)
say "$calls system calls for 256 paths"
at_most "system calls a path, in hundredths" 1200 $((calls * 100 / 256))

# A thousand units over the same disks: device-mapper lets maps share them. udev stays out of it.
multipathd shutdown
until_true 10 daemon_is_gone
udevadm control --exit
multipath -F
disks | awk '
  { number[NR] = $3 }
  END {
    for (unit = 0; unit < 1000; unit++) {
      printf "%sunit%d,mpath-3600a0b8000000000000000000000%04d,,rw,0 16384 multipath 0 0 1 1 service-time 0 4 2", unit ? ";" : "", unit, unit
      for (path = 0; path < 4; path++) printf " %s 1 1", number[(unit * 4 + path) % NR + 1]
    }
    printf "\n"
  }' >/tmp/concise
dmsetup create --concise </tmp/concise
same "a thousand maps" 1000 "$(maps | wc -l)"
say "1000 units of 4 paths: tavrenix list takes $(milliseconds tavrenix list) ms, dmsetup table $(milliseconds dmsetup table) ms"
same "1000 units listed" 1000 "$(list_facts | grep -c '^unit ')"
