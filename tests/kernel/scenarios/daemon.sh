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
