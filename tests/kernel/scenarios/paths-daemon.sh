# shellcheck shell=busybox
# Each path disabled and enabled while the daemon runs, which must not undo it: it checks every path once a second.
start_udev
debug_units 1 2
start_daemon 1
change_each_path 4
change_last_path
