# shellcheck shell=busybox
# What list and info say agrees with what the kernel and the daemon's own tools say.
start_udev
debug_units 4 2
start_daemon 4
same "maps by the daemon" 4 "$(maps | wc -l)"
check_agreement "by the daemon"
check_multipath "by the daemon"
stop_daemon
multipath -F
same "maps left" 0 "$(maps | wc -l)"

maps_by_hand queue-length
cat /sys/block/sd*/stat >/tmp/io.before
list_facts >/tmp/list.facts
info_facts >/tmp/info.facts
cat /sys/block/sd*/stat >/tmp/io.after
same "list and info read nothing from a disk" "$(cat /tmp/io.before)" "$(cat /tmp/io.after)"
check_agreement "by hand"
check_multipath "by hand"
failed=$(first_disk mpathb)
fail_path mpathb "$failed"
take_offline "$(first_disk mpathc)"
check_agreement "a failed and an offline path"
same "shown for the failed path" Disabled "$(tool_state mpathb "$failed")"
