# shellcheck shell=busybox
# Makes machines: disks with several paths, and maps over them, made by the daemon or by hand.

load_drivers() { modprobe -a dm_mod dm_multipath dm_round_robin dm_queue_length dm_service_time scsi_dh_alua sd_mod; }

start_udev() {
  load_drivers
  /lib/systemd/systemd-udevd --daemon
  udevadm trigger --action=add
  settle
}

settle() { [ ! -e /run/udev/control ] || udevadm settle --timeout=60; }

# debug_units UNITS PATHS: makes units of 8 MB on the kernel's simulated SCSI hosts, one host for each path. All units
# share one store, so only one of them may hold data.
debug_units() {
  modprobe scsi_debug vpd_use_hostno=0 "add_host=$2" "max_luns=$1" dev_size_mb=8
  until_true 60 disk_count_is $(($1 * $2))
  settle
}

disk_count_is() { [ "$(ls -d /sys/block/sd* 2>/dev/null | wc -l)" -eq "$1" ]; }

# loop_units UNITS PATHS: makes units of 64 MB, each with its own store and so many paths, over the loopback SCSI target.
# Each path of a unit has a host of its own.
loop_units() {
  local target=/sys/kernel/config/target unit path tpg
  modprobe -a target_core_file tcm_loop
  mount -t configfs configfs /sys/kernel/config
  mkdir -p $target/core/fileio_0
  for unit in $(seq 0 $(($1 - 1))); do
    truncate -s 64M "/tmp/store$unit"
    mkdir "$target/core/fileio_0/unit$unit"
    echo "fd_dev_name=/tmp/store$unit,fd_dev_size=67108864" >"$target/core/fileio_0/unit$unit/control"
    printf '%08x-0000-0000-0000-000000000000' $((unit + 161)) >"$target/core/fileio_0/unit$unit/wwn/vpd_unit_serial"
    echo 1 >"$target/core/fileio_0/unit$unit/enable"
  done
  for path in $(seq 1 "$2"); do
    tpg=$target/loopback/naa.500140500000000$path/tpgt_1
    mkdir -p "$tpg"
    echo "naa.500140510000000$path" >"$tpg/nexus"
    for unit in $(seq 0 $(($1 - 1))); do
      mkdir "$tpg/lun/lun_$unit"
      ln -s "$target/core/fileio_0/unit$unit" "$tpg/lun/lun_$unit/port"
    done
  done
  until_true 60 disk_count_is $(($1 * $2))
  settle
}

# disks: prints for each SCSI disk its WWID as multipath writes it, kernel name, device number and
# host:channel:target:lun.
disks() {
  local disk
  for disk in /sys/block/sd*; do
    echo "$(sed 's/^naa\./3/' "$disk/device/wwid") ${disk##*/} $(cat "$disk/dev") $(address_of "${disk##*/}")"
  done | sort
}

wwids() { disks | cut -d' ' -f1 | uniq; }
address_of() { basename "$(readlink "/sys/block/$1/device")"; }

# table_of WWID [SELECTOR] [FEATURES] [GROUPS]: prints a table of all paths of the unit, spread evenly over the groups.
table_of() {
  disks | awk -v wwid="$1" -v selector="${2:-service-time}" -v features="${3:-0}" -v groups="${4:-1}" '
    $1 == wwid { number[++n] = $3; name = $2 }
    END {
      getline sectors < ("/sys/block/" name "/size")
      arguments = selector == "service-time" ? "1 1" : "1"
      printf "0 %d multipath %s 0 %d 1", sectors, features, groups
      for (g = 0; g < groups; g++) {
        each = int(n / groups) + (g < n % groups)
        printf " %s 0 %d %d", selector, each, split(arguments, ignored, " ")
        for (i = 0; i < each; i++) printf " %s %s", number[++used], arguments
      }
      printf "\n"
    }'
}

# maps_by_hand [SELECTOR]: makes a map for each unit, with the name that the daemon would give it.
maps_by_hand() {
  local wwid letters="a b c d"
  for wwid in $(wwids); do
    table_of "$wwid" "$@" | dmsetup create "mpath${letters%% *}" -u "mpath-$wwid"
    letters=${letters#* }
  done
  settle
}

# start_daemon MAPS: starts multipathd and waits until it has made so many maps.
start_daemon() {
  multipathd
  until_true 120 map_count_is "$1" || say "only $(maps | wc -l) of $1 maps after two minutes"
  settle
}

maps() { dmsetup ls --target multipath | awk '!/^No devices/ { print $1 }'; }
map_count_is() { [ "$(maps | wc -l)" -eq "$1" ]; }

# paths_of MAP: prints for each path its kernel name, device number, host:channel:target:lun and the driver's A or F.
paths_of() {
  local number name state
  dmsetup status "$1" | tr ' ' '\n' | awk '/^[0-9]+:[0-9]+$/ { n = $1; next } n != "" { print n, $1; n = "" }' |
    while read -r number state; do
      name=$(basename "$(readlink "/sys/dev/block/$number")")
      echo "$name $number $(address_of "$name") $state"
    done
}

disks_of() { paths_of "$1" | cut -d' ' -f1; }
first_disk() { disks_of "$1" | head -n 1; }
path_state() { paths_of "$1" | awk -v disk="$2" '$1 == disk { print $4 }'; }
path_is() { [ "$(path_state "$1" "$2")" = "$3" ]; }
failed_paths() { paths_of "$1" | grep -c ' F$'; }

# fail_path MAP DISK: fails the path in the driver, without the tool and the daemon.
fail_path() { dmsetup message "$1" 0 "fail_path $(cat "/sys/block/$2/dev")"; }
take_offline() { echo offline >"/sys/block/$1/device/state"; }
