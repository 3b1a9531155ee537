# shellcheck shell=busybox
# 64 units of four paths, and a thousand: how the tool's list stands beside others' in the same boot, and what it asks
# of the kernel. Times are told beside their goals and never checked; system calls are.

# Of udev's rules only what the maps need, of the daemon only what the listing needs: under emulation all their work on
# 256 disks takes minutes.
few_rules() {
  local rules=/lib/udev/rules.d
  mkdir /tmp/rules
  mv $rules/55-dm.rules $rules/56-dm-mpath.rules $rules/95-dm-notify.rules /tmp/rules
  rm $rules/*
  mv /tmp/rules/* $rules
  echo 'SUBSYSTEM=="block", KERNEL=="sd*", PROGRAM="/bin/busybox sed s/^naa\./3/ /sys%p/device/wwid", ENV{ID_SERIAL}="%c", ENV{ID_WWN}="%c"' \
    >$rules/60-serial.rules
}

quiet_daemon() {
  sed -i 's/polling_interval 1$/polling_interval 300/' /etc/multipath.conf
  printf 'overrides {\n\tdetect_checker no\n\tdetect_prio no\n\tprio const\n}\n' >>/etc/multipath.conf
}

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

# milliseconds RUNS COMMAND...: what one run takes, the best of three times RUNS, from a clock of hundredths of a second.
milliseconds() {
  local runs=$1 try best='' took
  shift
  for try in 1 2 3; do
    took=$({
      cat /proc/uptime
      for _ in $(seq "$runs"); do "$@" >/tmp/timed.out 2>&1; done
      cat /proc/uptime
    } | awk -v runs="$runs" 'NR == 1 { from = $1 } END { print int(($1 - from) * 1000 / runs + 0.5) }')
    if [ -z "$best" ] || [ "$took" -lt "$best" ]; then best=$took; fi
  done
  echo "$best"
}

# beside GOAL RUNS COMMAND...: how long another command takes, as a multiple of the tool's $own.
beside() {
  local goal=$1 theirs
  shift
  theirs=$(milliseconds "$@")
  shift
  say "$*: $theirs ms, $(awk -v a="$theirs" -v b="$own" 'BEGIN { printf "%.2f", a / b }') times that${goal:+; goal: $goal}"
}

# system_calls PATHS: counts those of a list. A list that takes long looks every tenth of a second whether anything has
# changed, and after it has waited for the processor; then it reads the counters and labels anew. How often depends on
# this machine, so what is read once more is told beside the rest.
system_calls() {
  local calls again
  strace -f -o /tmp/calls tavrenix list >/tmp/out
  calls=$(grep -c '(.*= ' /tmp/calls)
  again=$(awk -F'"' '
    / openat\(/ {
      inside = $2 ~ "^/run/udev|/diskstats$|/uevent_seqnum$" && seen[$2]++
      if (inside && $2 ~ "/uevent_seqnum$") again++ # the maps were asked for before it
      if ($2 ~ "/stat$") inside = ++stats > 8 # a few counters come from files, then all from a table
    }
    inside { again++ }
    / close/ { inside = 0 }
    END { print again + 0 }' /tmp/calls)
  say "$calls system calls for $1 paths, $again of them to read something once more"
  differ "system calls counted" 0 "$calls"
  at_most "system calls a path of $1, in hundredths" 1200 $(((calls - again) * 100 / $1))
}

few_rules
quiet_daemon
start_udev
debug_units 64 4
start_daemon 64
udevadm settle --timeout=60
same "maps" 64 "$(maps | wc -l)"
tavrenix list >/dev/null
own=$(milliseconds 5 tavrenix list)
say "64 units of 4 paths: tavrenix list takes $own ms"
beside "at least 50" 1 multipath -ll
beside "" 1 multipath -l
beside "at least 1" 5 multipathd show topology
beside "" 1 lsblk
beside "at least 0.33" 5 dmsetup table

system_calls 256
same "64 units listed" 64 "$(awk -f /tests/report.awk /tmp/out | grep -c '^unit ')"

stop_daemon
udevadm control --exit
until_true 30 is_gone systemd-udevd
rm -rf /run/udev
dmsetup remove_all
make_maps 1000
same "a thousand maps" 1000 "$(maps | wc -l)"
many=$(milliseconds 1 tavrenix list)
say "1000 units of 4 paths: tavrenix list takes $many ms, dmsetup table $(milliseconds 1 dmsetup table) ms"
say "a unit costs $(awk -v a="$many" -v b="$own" 'BEGIN { printf "%.2f", (a / 1000) / (b / 64) }') times what it costs among 64; goal: about 1"
system_calls 4000
same "1000 units listed" 1000 "$(tool list | grep -cE '^ *[0-9]+ unit[0-9]+ ')" # the thousandth row is a column wider
