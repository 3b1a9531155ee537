# shellcheck shell=busybox
# The tool, what it says as facts, and the same facts from the kernel, to be compared with `agree`.

# Nothing that the tool does may hang or crash: a run that does not end by itself in time says so in its output.
tool() {
  local status=0
  timeout 60 tavrenix "$@" || status=$?
  [ $status -lt 128 ] || echo "the tool ended with status $status: $*"
  return $status
}

# identifier_of WWID: how the tool names that unit. Prefixes 3 and 2 stand before binary designators, others before text.
identifier_of() {
  case $1 in
    [23]*) echo "${1#?}" | tr 'a-f' 'A-F' ;;
    *) printf %s "${1#?}" | hexdump -v -e '1/1 "%02X"' && echo ;;
  esac
}

# identifier MAP
identifier() { identifier_of "$(wwid_of "$1")"; }

wwid_of() { dmsetup info -c --noheadings -o uuid "$1" | sed 's/^mpath-//'; }

list_facts() { tool list | awk -f /tests/report.awk; }

# info_of MAP: asked for by its unit's whole identifier.
info_of() { tool info -i "$(identifier "$1")" | awk -f /tests/report.awk; }
info_facts() { maps | while read -r map; do info_of "$map"; done; }
path_facts() { info_of "$1" | grep '^path '; }

# tool_state MAP DISK: what the tool shows in a path's first column.
tool_state() {
  path_facts "$1" | awk -F '|' -v address="$(address_of "$2")" '$2 == address { print $3 }'
}

# path_id MAP DISK: the identifier by which the tool is told of that path.
path_id() { address_of "$2" | awk -F : '{ printf "%03dF%02dF%04dF%04d", $1, $2, $3, $4 }'; }

address_of() { basename "$(readlink "/sys/block/$1/device")"; }

algorithm_of() { info_of "$1" | awk -F '|' '/^unit / { print $5 }'; }

# set_path MAP DISK -e|-d
set_path() { tool modify path -l "$(identifier "$1")" -i "$(path_id "$1" "$2")" "$3"; }

set_algorithm() { tool modify lun -i "$(identifier "$1")" -a "$2"; }

# selectors_of MAP: the selector of each group, from the table.
selectors_of() { dmsetup table "$1" | tr ' ' '\n' | grep -xE 'round-robin|queue-length|service-time' | sort | uniq -c | awk '{ print $2 "*" $1 }'; }

shown_selector() {
  case $1 in
    round-robin) echo "Modified Round Robin" ;;
    queue-length) echo "Least Queue Depth" ;;
    service-time) echo "Least Bytes" ;;
  esac
}

# shown_state DISK A|F: what the tool is to show for a path, from the device's own state and the driver's view.
shown_state() {
  local device=/sys/block/$1/device
  [ "$(cat "$device/state")" = running ] || { echo Unavailable; return; }
  [ "$2" = A ] || { echo Disabled; return; }
  case $(cat "$device/access_state" 2>/dev/null) in
    active/optimized | '') echo "Active Optimized" ;;
    active/non-optimized) echo "Active Non-Optimized" ;;
    standby) echo Standby ;;
    *) echo Unavailable ;;
  esac
}

# kernel_facts: units and paths, from dmsetup's table and status and from sysfs alone.
kernel_facts() {
  local map unit disk number address state first host
  for map in $(maps); do
    unit=$(identifier "$map" | cut -c1-35)
    first=$(first_disk "$map")
    echo "unit $unit|$(echo "$map" | cut -c1-16)|$(trimmed vendor "$first")|$(trimmed model "$first")|$(
      shown_selector "$(selectors_of "$map" | sed 's/\*.*//')")"
    paths_of "$map" | while read -r disk number address state; do
      host=/sys/class/scsi_host/host${address%%:*}
      echo "path $unit|$address|$(shown_state "$disk" "$state")|$(cut -c1-16 "$host/proc_name")"
    done
  done
}

trimmed() { [ -z "$2" ] || sed 's/ *$//' "/sys/block/$2/device/$1"; }

# check_agreement NAME: list and info against the kernel, unit by unit and path by path.
check_agreement() {
  kernel_facts >/tmp/kernel.facts
  grep '^unit ' /tmp/kernel.facts >/tmp/kernel.units
  list_facts >/tmp/list.facts
  agree "$1, list" /tmp/kernel.units /tmp/list.facts
  info_facts | grep -v '^volume ' >/tmp/info.facts
  agree "$1, info" /tmp/kernel.facts /tmp/info.facts
}

# check_multipath NAME: the same against `multipath -ll`; of a path it knows only whether the driver uses it.
check_multipath() {
  multipath -ll 2>/dev/null | awk -f /tests/multipath.awk >/tmp/multipath.facts
  info_facts | grep -v '^volume ' | awk -F '|' '
    /^path / { sub(/^path/, "use"); print $1 "|" $2 "|" ($3 == "Disabled" || $3 == "Unavailable" ? "failed" : "active"); next }
    { print }' >/tmp/use.facts
  agree "$1, multipath -ll" /tmp/multipath.facts /tmp/use.facts
}
