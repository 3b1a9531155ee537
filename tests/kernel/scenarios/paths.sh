# shellcheck shell=busybox
# Each path disabled and enabled, where no daemon runs.
start_udev
debug_units 1 2
maps_by_hand
change_each_path 1
change_last_path
has "a path of no unit" '^Unable to find path 00$' "$(tool modify path -l "$(identifier mpatha)" -i 00 -d)"
has "a unit that is not there" '^Unable to find lun 00$' "$(tool modify path -l 00 -i "$(path_id mpatha sda)" -d)"
