# shellcheck shell=busybox
# Runs the tool, and turns its reports and the state of the kernel into the same lines, which `agree` compares.

# Runs the tool. If it hangs or crashes, the output says so.
tool() {
  local status=0
  timeout 60 tavrenix "$@" || status=$?
  [ $status -lt 128 ] || echo "the tool ended with status $status: $*"
  return $status
}

# identifier MAP: prints the tool's identifier of the unit. A WWID with the prefix 3 or 2 is binary, any other is text.
identifier() {
  local wwid
  wwid=$(wwid_of "$1")
  case $wwid in
    [23]*) echo "${wwid#?}" | tr 'a-f' 'A-F' ;;
    *) printf %s "${wwid#?}" | hexdump -v -e '1/1 "%02X"' && echo ;;
  esac
}

wwid_of() { dmsetup info -c --noheadings -o uuid "$1" | sed 's/^mpath-//'; }

# path_id DISK: prints the identifier of the disk's path.
path_id() { address_of "$1" | awk -F : '{ printf "%03dF%02dF%04dF%04d", $1, $2, $3, $4 }'; }

set_path() { tool modify path -l "$(identifier "$1")" -i "$(path_id "$2")" "$3"; } # MAP DISK -e|-d
set_algorithm() { tool modify lun -i "$(identifier "$1")" -a "$2"; }               # MAP ALGORITHM

# Turn a report into one fact a line. Columns are cut by position, so a column that is too wide or shifted is noticed.
#   unit IDENTIFIER|ALIAS|VENDOR|PRODUCT|ALGORITHM
#   path IDENTIFIER|HOST:CHANNEL:TARGET:LUN|STATE|INTERFACE
#   volume IDENTIFIER|DEVICE|NAME|SIZE
facts() {
  awk '
    function column(from, width, text) { text = substr($0, from, width); sub(/ +$/, "", text); return text }
    function address(digits, field) {
      return split(digits, field, "F") == 4 ? field[1] + 0 ":" field[2] + 0 ":" field[3] + 0 ":" field[4] + 0 : digits
    }
    /^ +Alias +Vendor/ || /^    Volumes:$/ || /^ *$/ { next }
    /^    Access State +Path Identifier/ { section = "paths"; next }
    /^    BSD Name +Name/ { section = "volumes"; next }
    /^ *[0-9]+ / && !/^    / {
      unit = column(56, 35)
      print "unit " unit "|" column(5, 16) "|" column(22, 16) "|" column(39, 16) "|" column(92, 22)
      next
    }
    section == "paths" { print "path " unit "|" address(column(26, 30)) "|" column(5, 20) "|" column(57, 16); next }
    section == "volumes" { print "volume " unit "|" column(5, 15) "|" column(21, 40) "|" column(61, 32); next }
    { print "stray " $0 }'
}

list_facts() { tool list | facts; }
info_of() { tool info -i "$(identifier "$1")" | facts; }
algorithm_of() { info_of "$1" | awk -F '|' '/^unit / { print $5 }'; }
tool_state() { info_of "$1" | awk -F '|' -v address="$(address_of "$2")" '/^path / && $2 == address { print $3 }'; }

# selectors_of MAP: prints the selector of each group, from the table.
selectors_of() { dmsetup table "$1" | tr ' ' '\n' | grep -xE 'round-robin|queue-length|service-time' | sort | uniq -c | awk '{ print $2 "*" $1 }'; }

shown_selector() {
  case $1 in
    round-robin*) echo "Modified Round Robin" ;;
    queue-length*) echo "Least Queue Depth" ;;
    service-time*) echo "Least Bytes" ;;
  esac
}

# shown_state DISK A|F: prints the state that the tool must show, from the device's state and the driver's view.
shown_state() {
  local device=/sys/block/$1/device access
  [ "$(cat "$device/state")" = running ] || { echo Unavailable; return; }
  access=$(cat "$device/access_state" 2>/dev/null)
  case $2,$access in
    *,unavailable | *,offline | *,transitioning) echo Unavailable ;;
    F,*) echo Disabled ;;
    A,active/non-optimized) echo "Active Non-Optimized" ;;
    A,standby) echo Standby ;;
    *) echo "Active Optimized" ;;
  esac
}

# kernel_facts: prints the facts of units and paths, only from dmsetup and sysfs.
kernel_facts() {
  local map unit disk number address state first
  for map in $(maps); do
    unit=$(identifier "$map" | cut -c1-35)
    first=/sys/block/$(first_disk "$map")/device
    echo "unit $unit|$(echo "$map" | cut -c1-16)|$(sed 's/ *$//' "$first/vendor")|$(sed 's/ *$//' "$first/model")|$(
      shown_selector "$(selectors_of "$map")")"
    paths_of "$map" | while read -r disk number address state; do
      echo "path $unit|$address|$(shown_state "$disk" "$state")|$(cut -c1-16 "/sys/class/scsi_host/host${address%%:*}/proc_name")"
    done
  done
}

# check_agreement NAME: compares `list` and `info` with the kernel, unit by unit and path by path.
check_agreement() {
  local map
  kernel_facts >/tmp/kernel.facts
  grep '^unit ' /tmp/kernel.facts >/tmp/kernel.units
  list_facts >/tmp/list.facts
  agree "$1, list" /tmp/kernel.units /tmp/list.facts
  for map in $(maps); do info_of "$map"; done | grep -v '^volume ' >/tmp/info.facts
  agree "$1, info" /tmp/kernel.facts /tmp/info.facts
}

# change_paths MAP SECONDS: disables and enables each path under load. A daemon that would undo a change has that long.
change_paths() {
  local disk other
  start_load "/dev/mapper/$1"
  for disk in $(disks_of "$1"); do
    other=$(disks_of "$1" | grep -vx "$disk" | head -n 1)
    same "$disk disabled" ",F,Disabled" "$(set_path "$1" "$disk" -d),$(path_state "$1" "$disk"),$(tool_state "$1" "$disk")"
    sleep "$2"
    same "$disk disabled, later: it and another path" F,A "$(path_state "$1" "$disk"),$(path_state "$1" "$other")"
    load_goes_on "$disk disabled"
    same "$disk disabled again: message" "" "$(set_path "$1" "$disk" -d)"
    enable_path "$1" "$disk"
    load_goes_on "$disk enabled"
  done
  stop_load "every path disabled and enabled"
  for disk in $(disks_of "$1"); do
    set_path "$1" "$disk" -d >/tmp/out
    has "every path disabled, $disk: message or none" '^(Unable to disable path: .+)?$' "$(cat /tmp/out)"
    same "every path disabled, $disk: disabled, or it said so" "$([ -s /tmp/out ] && echo A || echo F)" "$(path_state "$1" "$disk")"
  done
  check_agreement "every path disabled"
  for disk in $(disks_of "$1"); do enable_path "$1" "$disk"; done
}

enable_path() {
  same "$2 enabled: message" "" "$(set_path "$1" "$2" -e)"
  until_true 5 path_is "$1" "$2" A
  same "$2 enabled" "A,$(shown_state "$2" A)" "$(path_state "$1" "$2"),$(tool_state "$1" "$2")"
}
