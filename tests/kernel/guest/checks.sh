# shellcheck shell=busybox
# The checks of a scenario. Each prints one line, "ok NAME" or "not ok NAME: ...", to descriptor 3.

ok() { echo "ok $1" >&3; }
not_ok() { echo "not ok $1: $(echo "$2" | tr '\n' '|')" >&3; }

# say TEXT...: prints a figure, which neither passes nor fails.
say() { echo "  $*" >&3; }

# same NAME EXPECTED ACTUAL: passes if the two texts are the same.
same() {
  if [ "$2" = "$3" ]; then ok "$1"; else not_ok "$1" "expected [$2], came [$3]"; fi
}

# has NAME PATTERN TEXT: passes if a line of the text matches the extended pattern.
has() {
  if echo "$3" | grep -qE -- "$2"; then ok "$1"; else not_ok "$1" "expected a line like [$2], came [$3]"; fi
}

# at_most NAME LIMIT NUMBER: passes if the number is from 1 to the limit.
at_most() {
  if [ "$3" -gt 0 ] && [ "$3" -le "$2" ]; then ok "$1: $3, at most $2"; else not_ok "$1" "expected 1 to $2, came $3"; fi
}

# agree NAME EXPECTED ACTUAL: passes if two files have the same lines in any order. Makes a check of each line.
agree() {
  [ -s "$2" ] || not_ok "$1" "nothing to compare with"
  awk -v name="$1" '
    NR == FNR { expected[$0]++; next }
    expected[$0] > 0 { expected[$0]--; print "ok " name ": " $0; next }
    { print "not ok " name ": came, but not expected: " $0 }
    END { for (line in expected) if (expected[line] > 0) print "not ok " name ": expected, but did not come: " line }
  ' "$2" "$3" >&3
}

# until_true SECONDS COMMAND...: tries the command ten times a second. Returns the status of the last try.
until_true() {
  local tries=$(($1 * 10))
  shift
  while ! "$@" >/dev/null 2>&1; do
    [ "$tries" -gt 0 ] || return 1
    sleep 0.1
    tries=$((tries - 1))
  done
}

# start_load DEVICE...: starts a load that notices a lost write, a wrong byte or an I/O error. Each pass writes 64 kB past
# the cache to each device and reads them back, and waits for $load_pause seconds.
start_load() {
  touch /tmp/load.run
  (
    pass=0
    while [ -e /tmp/load.run ]; do
      pass=$((pass + 1))
      awk -v pass="$pass" 'BEGIN { for (i = 0; i < 4096; i++) printf "%07d %07d\n", pass, i }' >/tmp/load.out
      for device; do
        dd if=/tmp/load.out of="$device" bs=64k seek=$((pass % 32)) oflag=direct conv=notrunc 2>/tmp/load.error &&
          dd if="$device" of=/tmp/load.in bs=64k skip=$((pass % 32)) count=1 iflag=direct 2>/tmp/load.error &&
          cmp -s /tmp/load.out /tmp/load.in && echo good || echo "pass $pass of $device: $(cat /tmp/load.error)"
      done
      sleep "${load_pause:-0}"
    done >/tmp/load.log
  ) &
  load=$!
  load_goes_on "the load on $* begins"
}

has_passed() { [ "$(grep -cx good /tmp/load.log)" -ge "$1" ]; }

# load_goes_on NAME: passes if two more passes of the load succeed within 20 seconds.
load_goes_on() {
  until_true 20 has_passed $(($(grep -cx good /tmp/load.log) + 2)) && ok "$1: the load goes on" ||
    not_ok "$1: the load goes on" "$(tail -n 1 /tmp/load.log)"
}

stop_load() {
  rm -f /tmp/load.run
  wait "$load"
  same "$1: errors and wrong bytes" "" "$(grep -vx good /tmp/load.log | head -n 3)"
}
