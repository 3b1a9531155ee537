# shellcheck shell=busybox
# Disabling and enabling each path of mpatha: the same with the daemon and without it.

# change_each_path SECONDS: how long to wait after each change, so that a daemon that would undo it has the time.
change_each_path() {
  local disk other
  start_load /dev/mapper/mpatha
  for disk in $(disks_of mpatha); do
    other=$(disks_of mpatha | grep -vx "$disk")
    same "$disk disabled: message" "" "$(set_path mpatha "$disk" -d)"
    same "$disk disabled: the driver" F "$(path_state mpatha "$disk")"
    same "$disk disabled: shown" Disabled "$(tool_state mpatha "$disk")"
    sleep "$1"
    same "$disk disabled, later: the driver" F "$(path_state mpatha "$disk")"
    same "$disk disabled: the other path" A "$(path_state mpatha "$other")"
    load_goes_on "$disk disabled: the load goes on"
    same "$disk disabled again: message" "" "$(set_path mpatha "$disk" -d)"
    same "$disk enabled: message" "" "$(set_path mpatha "$disk" -e)"
    until_true 5 path_is mpatha "$disk" A
    same "$disk enabled: the driver" A "$(path_state mpatha "$disk")"
    same "$disk enabled: shown" "$(shown_state "$disk" A)" "$(tool_state mpatha "$disk")"
    load_goes_on "$disk enabled: the load goes on"
  done
  stop_load "every path disabled and enabled"
}

path_is() { [ "$(path_state "$1" "$2")" = "$3" ]; }

# change_last_path: with every path disabled the tool still answers, shows what the driver does, and brings them back.
change_last_path() {
  local disk
  for disk in $(disks_of mpatha); do
    set_path mpatha "$disk" -d >/tmp/out
    has "every path disabled, $disk: message or none" '^(Unable to disable path: .+)?$' "$(cat /tmp/out)"
    same "every path disabled, $disk: disabled, or it said so" "$([ -s /tmp/out ] && echo A || echo F)" "$(path_state mpatha "$disk")"
  done
  check_agreement "every path disabled"
  for disk in $(disks_of mpatha); do
    same "every path back, $disk: message" "" "$(set_path mpatha "$disk" -e)"
    until_true 5 path_is mpatha "$disk" A
    same "every path back, $disk: the driver" A "$(path_state mpatha "$disk")"
  done
  start_load /dev/mapper/mpatha
  load_goes_on "every path back: the load goes"
  stop_load "every path back"
}
