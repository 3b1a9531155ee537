# shellcheck shell=busybox
# Machines without multipath, and users without rights: nothing said that is not asked for, nothing hung.
run_as_nobody() { su -s /bin/sh nobody -c "PATH=$PATH; $1"; }

list_is_empty() {
  tavrenix list >/tmp/out 2>&1
  same "$1, list: status" 0 $?
  same "$1, list: output" "" "$(cat /tmp/out)"
}

list_is_empty "no driver"
start_udev
debug_units 1 2
list_is_empty "disks but no maps"
echo "0 16384 zero" | dmsetup create other
same "another kind of map, list: output" "" "$(tool list 2>&1)"
same "info on what is not there" "Cannot locate lun with id 600A0B80" "$(tool info -i 600A0B80 2>&1)"

maps_by_hand
run_as_nobody "tavrenix list" >/tmp/out 2>/tmp/err
same "an ordinary user: status" 1 $?
same "an ordinary user: standard output" "" "$(cat /tmp/out)"
same "an ordinary user: standard error" "'tavrenix' must be run as root..." "$(cat /tmp/err)"
run_as_nobody "tavrenix" >/tmp/out 2>/tmp/err
same "an ordinary user without arguments: status" 1 $?
has "an ordinary user without arguments: usage" '^Usage:  tavrenix' "$(cat /tmp/out)"
same "an ordinary user without arguments: standard error" "" "$(cat /tmp/err)"
