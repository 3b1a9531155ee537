# shellcheck shell=busybox
# The shell takes busybox's own applets first, so /sbin/mke2fs is called by its path.
# Four units with data of their own, two paths each, mapped by the daemon: mpatha holds a file system, mpathb a
# partition with one, mpathc a logical volume with one, mpathd nothing, and its first path has failed.
start_udev
loop_units 4 2 64
start_daemon 4
/sbin/mke2fs -q -t ext4 -L WHOLE /dev/mapper/mpatha
echo ',32M,L' | sfdisk -q /dev/mapper/mpathb
# udev's rule and this line both make the partition's map; whichever is first, the device node follows.
kpartx -a -s /dev/mapper/mpathb
until_true 10 test -b /dev/mapper/mpathb-part1
udevadm settle
/sbin/mke2fs -q -t ext4 -L 'part one' /dev/mapper/mpathb-part1
pvcreate -q /dev/mapper/mpathc
vgcreate -q group /dev/mapper/mpathc
lvcreate -q -Zn -Wn -L 40M -n volume group
/sbin/mke2fs -q -t ext4 -L LOGICAL /dev/group/volume
failed=$(paths_of mpathd | head -n 1 | cut -d' ' -f1)
multipathd fail path "$failed"
udevadm trigger --settle --subsystem-match=block
same "the failed path" F "$(path_state mpathd "$failed")"
same "maps" 4 "$(maps | wc -l)"
same "labels" "LOGICAL WHOLE part\\x20one " \
  "$(grep -h ID_FS_LABEL_ENC /run/udev/data/b25[0-9]:* | cut -d= -f2 | sort | tr '\n' ' ')"
record volumes
