# shellcheck shell=busybox
# Machines to try things on: disks with several paths, and the maps over them, made by the daemon or by hand.

start_udev() {
  modprobe -a dm_mod dm_zero dm_multipath dm_round_robin dm_queue_length dm_service_time scsi_dh_alua sd_mod
  /lib/systemd/systemd-udevd --daemon
  udevadm trigger --action=add
  udevadm settle --timeout=30
}

# debug_units UNITS PATHS [OPTION...]: units of 8 MB on the kernel's simulated SCSI hosts, one host for each path.
# All units share one store, so data may lie on one of them only.
debug_units() {
  local units=$1 paths=$2
  shift 2
  modprobe scsi_debug vpd_use_hostno=0 "add_host=$paths" "max_luns=$units" dev_size_mb=8 "$@"
  until_true 60 disk_count_is $((units * paths))
  [ ! -e /run/udev/control ] || udevadm settle --timeout=60
}

disk_count_is() { [ "$(ls -d /sys/block/sd* 2>/dev/null | wc -l)" -eq "$1" ]; }

# loop_units UNITS PATHS MEGABYTES: units with a store of their own each, over the kernel's loopback SCSI target.
loop_units() {
  local target=/sys/kernel/config/target unit path tpg lun
  modprobe -a target_core_file tcm_loop
  mount -t configfs configfs /sys/kernel/config
  mkdir -p /tmp/stores $target/core/fileio_0
  for unit in $(seq 0 $(($1 - 1))); do
    truncate -s "${3}M" "/tmp/stores/$unit"
    mkdir "$target/core/fileio_0/unit$unit"
    echo "fd_dev_name=/tmp/stores/$unit,fd_dev_size=$(($3 * 1048576))" >"$target/core/fileio_0/unit$unit/control"
    printf '%08x-0000-0000-0000-000000000000' $((unit + 161)) >"$target/core/fileio_0/unit$unit/wwn/vpd_unit_serial"
    echo 1 >"$target/core/fileio_0/unit$unit/enable"
  done
  for path in $(seq 1 "$2"); do
    tpg=$target/loopback/naa.500140500000000$path/tpgt_1
    mkdir -p "$tpg"
    echo "naa.500140510000000$path" >"$tpg/nexus"
    for unit in $(seq 0 $(($1 - 1))); do
      lun=$tpg/lun/lun_$unit
      mkdir "$lun"
      ln -s "$target/core/fileio_0/unit$unit" "$lun/port"
    done
  done
  until_true 60 disk_count_is $(($1 * $2))
  udevadm settle --timeout=60
}

# make_file_systems: on four units with stores of their own, mapped by the daemon: mpatha holds a file system, mpathb a
# partition with one, mpathc a logical volume with one, mpathd nothing.
# The shell takes busybox's own applets first, so /sbin/mke2fs is called by its path.
make_file_systems() {
  loop_units 4 2 64
  start_daemon 4
  /sbin/mke2fs -q -t ext4 -L WHOLE /dev/mapper/mpatha
  echo ',32M,L' | sfdisk -q /dev/mapper/mpathb
  # udev's rule and this line both make the partition's map; whichever is first, the device node follows.
  kpartx -a -s /dev/mapper/mpathb
  until_true 10 test -b /dev/mapper/mpathb-part1
  udevadm settle
  /sbin/mke2fs -q -t ext4 -L 'part one' /dev/mapper/mpathb-part1
  pvcreate -q /dev/mapper/mpathc
  vgcreate -q group /dev/mapper/mpathc
  lvcreate -q -Zn -Wn -L 40M -n volume group
  /sbin/mke2fs -q -t ext4 -L LOGICAL /dev/group/volume
  udevadm trigger --settle --subsystem-match=block
}

# disks: one line for each SCSI disk: WWID as multipath writes it, kernel name, device number, host:channel:target:lun.
disks() {
  local disk
  for disk in /sys/block/sd*; do
    echo "$(sed 's/^naa\./3/' "$disk/device/wwid") ${disk##*/} $(cat "$disk/dev") $(basename "$(readlink "$disk/device")")"
  done | sort
}

wwids() { disks | cut -d' ' -f1 | uniq; }

# table_of WWID [SELECTOR] [FEATURES] [GROUPS]: a table of all the unit's paths, spread evenly over the groups.
table_of() {
  local selector=${2:-service-time} features=${3:-0} groups=${4:-1}
  disks | awk -v wwid="$1" -v selector="$selector" -v features="$features" -v groups="$groups" '
    $1 == wwid { number[++n] = $3; name = $2 }
    END {
      getline sectors < ("/sys/block/" name "/size")
      arguments = selector == "service-time" ? "1 1" : selector == "historical-service-time" ? "" : "1"
      count = split(arguments, ignored, " ")
      printf "0 %d multipath %s 0 %d 1", sectors, features, groups
      for (g = 0; g < groups; g++) {
        each = int(n / groups) + (g < n % groups)
        printf " %s 0 %d %d", selector, each, count
        for (i = 0; i < each; i++) printf " %s%s", number[++used], arguments == "" ? "" : " " arguments
      }
      printf "\n"
    }'
}

# maps_by_hand [SELECTOR] [FEATURES] [GROUPS]: a map for each unit, as the daemon would name it, without the daemon.
maps_by_hand() {
  local wwid letters="a b c d e f g h"
  for wwid in $(wwids); do
    table_of "$wwid" "$@" | dmsetup create "mpath${letters%% *}" -u "mpath-$wwid"
    letters=${letters#* }
  done
  udevadm settle --timeout=60
}

# start_daemon MAPS: multipathd, once it has made that many maps.
start_daemon() {
  multipathd
  until_true 120 map_count_is "$1" || say "only $(maps | wc -l) of $1 maps after two minutes"
  udevadm settle --timeout=60
}

stop_daemon() {
  multipathd shutdown
  until_true 10 is_gone multipathd
}

is_gone() { ! pidof "$1"; }

maps() { dmsetup ls --target multipath | awk '!/^No devices/ { print $1 }'; }

map_count_is() { [ "$(maps | wc -l)" -eq "$1" ]; }

# paths_of MAP: kernel name, device number, host:channel:target:lun and the driver's A or F of each path of a map.
paths_of() {
  local number name
  dmsetup status "$1" | tr ' ' '\n' | awk '/^[0-9]+:[0-9]+$/ { n = $1; next } n != "" { print n, $1; n = "" }' |
    while read -r number state; do
      name=$(basename "$(readlink "/sys/dev/block/$number")")
      echo "$name $number $(basename "$(readlink "/sys/block/$name/device")") $state"
    done
}

# disks_of MAP: the kernel names of its paths.
disks_of() { paths_of "$1" | cut -d' ' -f1; }
first_disk() { disks_of "$1" | head -n 1; }

# path_state MAP DISK: the driver's A or F.
path_state() { paths_of "$1" | awk -v disk="$2" '$1 == disk { print $4 }'; }
failed_paths() { paths_of "$1" | grep -c ' F$'; }

# fail_path MAP DISK: in the driver, past the tool and the daemon.
fail_path() { dmsetup message "$1" 0 "fail_path $(cat "/sys/block/$2/dev")"; }
take_offline() { echo offline >"/sys/block/$1/device/state"; }
