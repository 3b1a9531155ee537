start_udev
debug_units 4 2
start_daemon 4
say "$(cat /proc/uptime)"
multipath -ll >&3
dmsetup table >&3; dmsetup status >&3
paths_of mpatha >&3
same x 4 "$(maps | wc -l)"
stop_daemon
multipath -F
dmsetup ls >&3
maps_by_hand
dmsetup table >&3
cat /proc/uptime >&3
