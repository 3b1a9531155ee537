# shellcheck shell=busybox
# What tavrenix-monitor says of each unit and path agrees with dmsetup and sysfs, whatever has become of them.
# Of each unit and of each path one line, in the order of the document: its identifier, then KEY=VALUE.
kernel_details() {
  local map table number state failures name device
  for map in $(maps); do
    table=$(dmsetup table "$map")
    {
      identifier "$map"
      echo "device=dm-$(dmsetup info -c --noheadings -o minor "$map")"
      echo "map_name=$map"
      echo "wwid=$(wwid_of "$map")"
      echo "size_bytes=$(echo "$table" | awk '{ print $2 * 512 }')"
      echo "selector=$(selectors_of "$map" | sed 's/\*.*//')"
      echo "queueing=$(echo "$table" | grep -q queue_if_no_path && echo true || echo false)"
      echo "suspended=$(dmsetup info "$map" | grep -q SUSPENDED && echo true || echo false)"
      echo "open_count=$(dmsetup info -c --noheadings -o open "$map")"
      dmsetup status "$map" | tr ' ' '\n' | awk 'last !~ /:/ && sub(/^A$/, "active") + sub(/^E$/, "enabled") { print "in " $1 }
        { last = $1 }'
    } | paste -sd '|'
    # Of each path: number, A or F, failures. Its group is the count of selectors in front of it in the table.
    dmsetup status "$map" | tr ' ' '\n' | awk 'b ~ /:/ { print b, a, $1 } { b = a; a = $1 }' | while read -r number state failures; do
      name=$(basename "$(readlink "/sys/dev/block/$number")")
      device=/sys/block/$name/device
      {
        echo "$(path_id "$name")"
        printf '%s=%s\n' device "$name" device_number "$number" address "$(address_of "$name")"
        echo "group=$(echo "${table%% "$number" *}" | grep -oE 'queue-length' | wc -l)"
        echo "driver_state=$([ "$state" = A ] && echo active || echo failed)"
        echo "device_state=$(cat "$device/state")"
        [ ! -s "$device/access_state" ] || echo "access_state=$(cat "$device/access_state")"
        printf '%s=%s\n' failures "$failures" errors $(($(cat "$device/ioerr_cnt"))) timeouts $(($(cat "$device/iotmo_cnt")))
        awk '{ print "in_flight=" $1 + $2 }' "/sys/block/$name/inflight"
      } 2>/dev/null | paste -sd '|'
    done
  done
}

# The same from tavrenix-monitor json.
details_of() {
  awk -v keys=" device map_name wwid size_bytes selector queueing suspended open_count device_number address group driver_state
      device_state access_state failures errors timeouts in_flight " '
    { key = value = $0; gsub(/^ *"|".*$/, "", key); gsub(/^ *"[a-z_]*": |[", ]/, "", value) }
    /^ *"identifier": / { if (line != "") print line; line = value; next }
    /^ *"[a-z]*",?$/ { line = line "|in " value }
    /": [^[{]/ && keys ~ "[ \n]" key "[ \n]" { line = line "|" key "=" value }
    END { print line }' "$1"
}

# agrees NAME: once udev has looked at what has changed, since each look opens the map and may change its group.
agrees() {
  udevadm settle --timeout=60
  kernel_details >/tmp/kernel.facts
  timeout 60 tavrenix-monitor json >/tmp/json
  same "$1, status" 0 $?
  details_of /tmp/json >/tmp/monitor.facts
  agree "$1" /tmp/kernel.facts /tmp/monitor.facts
}

# judged NAME STATUS: the status of check.
judged() {
  local status=0
  timeout 60 tavrenix-monitor check >/tmp/check || status=$?
  same "$1, check: $(cat /tmp/check)" "$2" "$status"
}

same "without the driver" "The multipath driver is not present." "$(tavrenix-monitor)"
start_udev
same "without units" "No multipathed units." "$(tavrenix-monitor)"
debug_units 4 2
maps_by_hand queue-length "1 queue_if_no_path" 2
agrees "healthy"
judged "healthy" 0
has "a person's screen" '^4 units, all well; 8 paths, 8 usable\.$' "$(tavrenix-monitor)"

fail_path mpatha "$(first_disk mpatha)"
take_offline "$(first_disk mpathb)"
agrees "degraded"
judged "degraded" 1

for disk in $(disks_of mpathc); do fail_path mpathc "$disk"; done
agrees "no path left"
judged "no path left" 2

dmsetup suspend --noflush mpathd
agrees "suspended"
has "a suspended unit" 'mpathd .*suspended' "$(tavrenix-monitor)"
dmsetup resume mpathd

dmsetup message mpathc 0 fail_if_no_path
agrees "no queueing"

# The driver wants CAP_SYS_ADMIN, and its control file, of mode 0600, wants root. Nothing else is needed.
document() { "$@" tavrenix-monitor json 2>/tmp/errors | grep -v '"time_unix_ms"\|"generation"'; }
setpriv="/usr/bin/setpriv --no-new-privs"
document env >/tmp/json
document $setpriv --bounding-set=-all,+sys_admin >/tmp/json.bounded
same "root with CAP_SYS_ADMIN alone, as the services" "" "$(diff /tmp/json /tmp/json.bounded)"
for rights in --bounding-set=-sys_admin "--reuid=65534 --clear-groups --inh-caps=-all,+sys_admin --ambient-caps=-all,+sys_admin"; do
  same "$rights: document" "" "$(document $setpriv $rights)"
  has "$rights: message" CAP_SYS_ADMIN "$(cat /tmp/errors)"
done
