# shellcheck shell=busybox
# File systems with labels on a whole unit, on a partition and on a logical volume are the units' volumes.
start_udev
make_file_systems

# A device may be told by the kernel's name or by the mapper's.
volume_facts() {
  info_of "$1" | sed -n 's/^volume //p' | while IFS='|' read -r unit device name size; do
    case $device in dm-*) device=$(cat "/sys/block/$device/dm/name") ;; esac
    echo "$unit|$device|$name|$size"
  done
}

same "a file system on a whole unit" "$(identifier mpatha)|mpatha|WHOLE|  67.1 MB (67108864 Bytes)" "$(volume_facts mpatha)"
same "a file system on a partition" "$(identifier mpathb)|mpathb-part1|part one|  33.6 MB (33554432 Bytes)" "$(volume_facts mpathb)"
same "a file system on a logical volume" "$(identifier mpathc)|group-volume|LOGICAL|  41.9 MB (41943040 Bytes)" "$(volume_facts mpathc)"
same "a unit without a file system" "" "$(volume_facts mpathd)"
check_agreement "units with file systems"
