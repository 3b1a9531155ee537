# shellcheck shell=busybox
# File systems with labels on a whole unit, on a partition and on a logical volume are the units' volumes.
start_udev
loop_units 4 2 64
start_daemon 4
# The shell takes busybox's own applets first, so /sbin/mke2fs is called by its path.
/sbin/mke2fs -q -t ext4 -L WHOLE /dev/mapper/mpatha
echo ',32M,L' | sfdisk -q /dev/mapper/mpathb
kpartx -a -s /dev/mapper/mpathb
until_true 10 test -b /dev/mapper/mpathb-part1
udevadm settle
/sbin/mke2fs -q -t ext4 -L 'part one' /dev/mapper/mpathb-part1
pvcreate -q /dev/mapper/mpathc
vgcreate -q group /dev/mapper/mpathc
lvcreate -q -Zn -Wn -L 40M -n volume group
/sbin/mke2fs -q -t ext4 -L LOGICAL /dev/group/volume
udevadm trigger --settle --subsystem-match=block

# A device may be told by the kernel's name or by the mapper's.
volume_facts() {
  tool info -i "$(identifier "$1")" | awk -f /tests/report.awk | sed -n 's/^volume //p' | while IFS='|' read -r unit device name size; do
    case $device in dm-*) device=$(cat "/sys/block/$device/dm/name") ;; esac
    echo "$unit|$device|$name|$size"
  done
}

same "a file system on a whole unit" "$(identifier mpatha)|mpatha|WHOLE|  67.1 MB (67108864 Bytes)" "$(volume_facts mpatha)"
same "a file system on a partition" "$(identifier mpathb)|mpathb-part1|part one|  33.6 MB (33554432 Bytes)" "$(volume_facts mpathb)"
same "a file system on a logical volume" "$(identifier mpathc)|group-volume|LOGICAL|  41.9 MB (41943040 Bytes)" "$(volume_facts mpathc)"
same "a unit without a file system" "" "$(volume_facts mpathd)"
check_agreement "units with file systems"
