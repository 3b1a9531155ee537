# shellcheck shell=busybox
# A steady load that would notice a lost write, a wrong byte or an I/O error.

# start_load DEVICE: writes and reads back 64 kB at a time, past the cache, until stop_load.
start_load() {
  : >/tmp/load.log
  touch /tmp/load.run
  (
    pass=0
    while [ -e /tmp/load.run ]; do
      pass=$((pass + 1))
      awk -v pass="$pass" 'BEGIN { for (i = 0; i < 4096; i++) printf "%07d %07d\n", pass, i }' >/tmp/load.out
      if ! dd if=/tmp/load.out of="$1" bs=64k seek=$((pass % 32)) oflag=direct conv=notrunc 2>/tmp/load.error; then
        echo "write error: $(cat /tmp/load.error)"
      elif ! dd if="$1" of=/tmp/load.in bs=64k skip=$((pass % 32)) count=1 iflag=direct 2>/tmp/load.error; then
        echo "read error: $(cat /tmp/load.error)"
      elif ! cmp -s /tmp/load.out /tmp/load.in; then
        echo "wrong bytes in pass $pass"
      else
        echo good
      fi
    done >/tmp/load.log
    rm -f /tmp/load.busy
  ) &
  touch /tmp/load.busy
  until_true 20 load_has_passed 1
}

passes() { grep -cx good /tmp/load.log; }

load_has_passed() { [ "$(passes)" -ge "$1" ]; }

# load_goes_on NAME: two more passes end well within 20 seconds.
load_goes_on() {
  local before
  before=$(passes)
  if until_true 20 load_has_passed $((before + 2)); then ok "$1"; else not_ok "$1" "the load stands at $before passes; $(tail -n 1 /tmp/load.log)"; fi
}

# stop_load NAME: ends the load and checks that nothing went wrong while it ran.
stop_load() {
  rm -f /tmp/load.run
  until_true 60 test ! -e /tmp/load.busy || not_ok "$1" "the load hangs"
  same "$1: errors and wrong bytes" "" "$(grep -vx good /tmp/load.log | head -n 3)"
}
