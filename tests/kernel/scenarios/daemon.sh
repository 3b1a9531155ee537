# shellcheck shell=busybox
# Maps made by multipathd: the daemon agrees with the reports and does not undo changes, and the tool finds volumes.
start_udev
make_file_systems
check_agreement "by the daemon"
change_paths mpathd 3

# A device may be reported by the kernel's name or by the mapper's.
volumes_of() {
  info_of "$1" | sed -n 's/^volume [^|]*|//p' | while IFS='|' read -r device name size; do
    case $device in dm-*) device=$(cat "/sys/block/$device/dm/name") ;; esac
    echo "$device|$name|$size"
  done
}
same "a file system on a whole unit" "mpatha|WHOLE|  67.1 MB (67108864 Bytes)" "$(volumes_of mpatha)"
same "a file system on a partition" "mpathb-part1|part one|  33.6 MB (33554432 Bytes)" "$(volumes_of mpathb)"
same "a file system on a logical volume" "group-volume|LOGICAL|  41.9 MB (41943040 Bytes)" "$(volumes_of mpathc)"
same "a unit without a file system" "" "$(volumes_of mpathd)"
