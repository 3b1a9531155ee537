# shellcheck shell=busybox
# Four units with data of their own, two paths each, mapped by the daemon; the first path of mpathd has failed.
start_udev
make_file_systems
failed=$(first_disk mpathd)
multipathd fail path "$failed"
udevadm trigger --settle --subsystem-match=block
same "the failed path" F "$(path_state mpathd "$failed")"
same "maps" 4 "$(maps | wc -l)"
same "labels" "LOGICAL WHOLE part\\x20one " \
  "$(grep -h ID_FS_LABEL_ENC /run/udev/data/b25[0-9]:* | cut -d= -f2 | sort | tr '\n' ' ')"
record volumes
