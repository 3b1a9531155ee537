# shellcheck shell=busybox
# tavrenix-maintain takes a port of three units out and brings it back, under a load that notices a lost write. The maps
# fail a request at once if no path is left. First without udevd and multipathd, then with them.
maintain() { timeout 120 tavrenix-maintain "$@"; }
disks_at() { awk -v host="$1:" 'index($4, host) == 1 { print $2 }' /tmp/disks | sort; }
sectors_at() { for disk in $(disks_at "$1"); do awk '{ print $3 + $7 }' "/sys/block/$disk/stat"; done; }
failed_disks() {
  dmsetup status --target multipath | tr ' ' '\n' |
    awk 'NR == FNR { name[$3] = $2; next } $1 == "F" { print name[last] } { last = $1 }' /tmp/disks - | sort
}
none_failed() { [ -z "$(failed_disks)" ]; }
has_asked_twice() { [ "$(grep -c 'Enter goes on$' /tmp/asked)" = 2 ]; }
killing() { strace -f -o /dev/null -e trace=fsync -e "inject=fsync:signal=KILL:when=$n" tavrenix-maintain "$@"; }
is_open() { grep -q '^  "open": true' /tmp/status; }

# truth NAME: passes if the journal says of each path what the driver says. A path of a step under way may be either.
truth() {
  failed_disks >/tmp/failed
  maintain status --json >/tmp/status
  same "$1: what the journal does not say" "" "$(awk -F '"' 'FILENAME ~ "failed" { failed[$1]; next }
    $2 == "device" { disk = $4 }
    $2 == "step" && (disk in failed ? $4 !~ /^(disabl|enabling)/ : $4 == "disabled") { print disk " is not " $4 }
    $2 == "step" { delete failed[disk] }
    END { for (disk in failed) print disk " is out" }' /tmp/failed /tmp/status)"
}

# kill_each ODD EVEN: kills a drain before its first fsync, of the journal or its folder, then before its second, until it
# gets through. Two ways take turns in what follows: undo, or restore after a resume and a killed restore.
kill_each() {
  local n=0 status=137 way=$1 next=$2 last
  while [ $status -eq 137 ]; do
    n=$((n + 1)) status=0
    killing drain --host "$port" --unit mpatha --unit mpathb || status=$?
    truth "$name, a drain killed at sync $n"
    if [ "$way" = restore ]; then
      maintain drain --resume
      truth "$name, resumed after sync $n"
      same "$name, resumed after sync $n: paths out" "$(is_open && echo 2 || echo 0)" "$(wc -l </tmp/failed)"
      killing restore
      truth "$name, a restore killed at sync $n"
    fi
    maintain "$way"
    truth "$name, $way after sync $n"
    same "$name, $way after sync $n: out or open" "" "$(cat /tmp/failed)$(is_open && echo open)"
    last=$way way=$next next=$last
  done
  same "$name: killed at each of 12 syncs, then drained" "12, 0" "$((n - 1)), $status"
} >>/tmp/out 2>&1

# disturb: while a drain is under way, a second one is refused. Then a path of another port fails.
disturb() {
  local disk run
  disk=$(disks_at "$other" | tail -n 1)
  maintain drain --host "$port" --confirm </tmp/answers >/tmp/asked 2>&1 &
  run=$!
  exec 4>/tmp/answers
  echo >&4
  until_true 60 has_asked_twice
  maintain drain --host "$other" >/tmp/out 2>&1
  same "$name, a second drain: refused for the first, with one path out" "2, 1, 1" \
    "$?, $(grep -c 'another run is at work: drain by root' /tmp/out), $(failed_disks | wc -l)"
  take_offline "$disk"
  echo >&4
  wait $run
  same "$name, another port fails: said and brought back, out:" "1, 1, " \
    "$?, $(grep -c "path $disk was active_opt.* and is .*brought back" /tmp/asked), $(failed_disks | grep -vx "$disk")"
  echo running >"/sys/block/$disk/device/state"
  for map in $(maps); do dmsetup message "$map" 0 "reinstate_path $(cat "/sys/block/$disk/dev")"; done 2>/dev/null
  until_true 20 none_failed
}

# maintenance NAME ODD EVEN: the port's disks stay out, get nothing, and carry requests again. Then all that disturbs.
maintenance() {
  local name=$1 watch before
  start_load /dev/mapper/mpatha /dev/mapper/mpathb /dev/mapper/mpathc
  touch /tmp/watch.run
  while [ -e /tmp/watch.run ]; do
    dmsetup status --target multipath | grep -c ':[0-9]* A ' && sleep 0.3
  done >/tmp/watched &
  watch=$!
  maintain drain --host "$port" >/tmp/out 2>&1
  same "$name, drained" "0, $(disks_at "$port")" "$?, $(failed_disks)"
  before=$(sectors_at "$port")
  sleep 4
  load_goes_on "$name, drained"
  same "$name, drained: later" "$(disks_at "$port"), $before" "$(failed_disks), $(sectors_at "$port")"
  maintain restore >/tmp/out 2>&1
  same "$name, restored" "0, 3 carry I/O, out:" "$?, $(grep -c 'carries I/O$' /tmp/out) carry I/O, out:$(failed_disks)"
  disturb
  kill_each "$2" "$3"
  stop_load "$name"
  rm /tmp/watch.run
  wait $watch
  same "$name: units with a path in use, at each look" 3 "$(sort -u /tmp/watched)"
}

export DM_DISABLE_UDEV=1 load_pause=0.1 # dmsetup makes the nodes; the load leaves time for what is killed
load_drivers
loop_units 3 3
disks >/tmp/disks
mkfifo /tmp/answers
port=$(awk 'NR == 1 { sub(/:.*/, "", $4); print $4 }' /tmp/disks)
other=$((port + 1))
maps_by_hand
maintenance "by hand" undo restore
for map in $(maps); do dmsetup remove "$map"; done
unset DM_DISABLE_UDEV
start_udev
start_daemon 3
maintenance "by the daemon" restore undo
