# shellcheck shell=busybox
# With 64 units of four paths, and with a thousand, `list` shows all of them for a bounded count of system calls.

# make_maps UNITS: makes maps of four paths each. They share the disks, which device-mapper allows. They work on bios,
# because request queues for so many maps would fill the memory. `dmsetup create --concise` takes sixteen maps at once.
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
    }' | while read -r line; do
    echo "$line" | dmsetup create --concise
  done
}

# calls COMMAND...: prints how many system calls it makes.
calls() { strace -f -o /tmp/calls "$@" >/tmp/out && grep -c '(.*= ' /tmp/calls; }

load_drivers
debug_units 64 4
for units in 64 1000; do
  make_maps $units
  same "$units units listed" $units "$(tool list | grep -cE '^ *[0-9]+ unit[0-9]+ ')" # the thousandth row is a column wider
  at_most "$units units: hundredths of system calls a path" $((units == 64 ? 715 : 785)) $(($(calls tavrenix list) * 100 / (4 * units)))
  dmsetup remove_all
done
