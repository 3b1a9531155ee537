# shellcheck shell=busybox
# With 64 units of four paths, and with a thousand, `list` shows all of them for a bounded count of system calls.

# Runs only those rules of udev that the maps need.
rules=/lib/udev/rules.d
mkdir /tmp/rules
mv $rules/55-dm.rules $rules/56-dm-mpath.rules $rules/95-dm-notify.rules /tmp/rules
rm $rules/*
mv /tmp/rules/* $rules

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

start_udev
debug_units 64 4
make_maps 64
settle
same "maps" 64 "$(maps | wc -l)"
at_most "hundredths of system calls a path, of 256" 796 $(($(calls tavrenix list) * 100 / 256))
same "64 units listed" 64 "$(facts </tmp/out | grep -c '^unit ')"

udevadm control --exit
until_true 30 is_gone systemd-udevd
rm -rf /run/udev
dmsetup remove_all
make_maps 1000
at_most "hundredths of system calls a path, of 4,000" 800 $(($(calls tavrenix list) * 100 / 4000))
same "1,000 units listed" 1000 "$(grep -cE '^ *[0-9]+ unit[0-9]+ ' /tmp/out)" # the thousandth row is a column wider
