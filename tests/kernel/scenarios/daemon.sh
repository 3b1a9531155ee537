# shellcheck shell=busybox
# Maps made by multipathd: the daemon agrees with the reports and does not undo changes, and the tool finds a volume.
start_udev
debug_units 4 2
start_daemon 4
check_agreement "by the daemon"

# Does not use the mke2fs of busybox. udev's rule may make the partition's map first.
echo ',4M,L' | sfdisk -q /dev/mapper/mpathb
kpartx -a -s /dev/mapper/mpathb
until_true 10 test -b /dev/mapper/mpathb-part1
settle
/sbin/mke2fs -q -t ext4 -L 'part one' /dev/mapper/mpathb-part1
udevadm trigger --settle --subsystem-match=block
volume=$(info_of mpathb | sed -n 's/^volume [^|]*|//p')
device=${volume%%|*} # may be reported by the kernel's name or by the mapper's
case $device in dm-*) device=$(cat "/sys/block/$device/dm/name") ;; esac
same "a file system on a partition" "mpathb-part1|part one|   4.2 MB (4194304 Bytes)" "$device|${volume#*|}"
change_paths mpathd 3

# multipath's own tool and the monitor say the same of each path, also of those that fail behind the daemon's back.
by_multipath() {
  multipath -ll | tr -d '|`' | sed 's/^[-+ ]*//' | awk '$1 ~ /^[0-9]+:[0-9]+:/ { print $1, $2, $3, $4, $6 }' | sort
}
by_monitor() {
  tavrenix-monitor json --paths | awk -F '"' '{ fact[$2] = $4 }
    $2 == "device_state" { print fact["address"], fact["device"], fact["device_number"], fact["driver_state"], $4 }' | sort
}
agrees_with_multipath() {
  by_multipath >/tmp/multipath.facts
  by_monitor >/tmp/monitor.facts
  agree "$1, multipath" /tmp/multipath.facts /tmp/monitor.facts
}
agrees_with_multipath "healthy"
kill -STOP "$(pidof multipathd)"
fail_path mpatha "$(first_disk mpatha)"
take_offline "$(first_disk mpathc)"
agrees_with_multipath "behind the daemon's back"
