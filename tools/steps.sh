# shellcheck shell=bash
# What a verb prints while it works: numbered steps. Output that matters only after a failure goes to a log.

step_count=0
step_total=0
logs=build/logs

# steps N: begins a verb of N steps.
steps() {
  step_count=0
  step_total=$1
}

step() {
  step_count=$((step_count + 1))
  printf '[%d/%d] %s\n' "$step_count" "$step_total" "$*"
}

fail() {
  printf 'run: %s\n' "$*" >&2
  exit 1
}

# Two functions for $progress, which reads the output of a logged command: one prints nothing, and one prints how far
# ninja has got.
no_progress() {
  cat >/dev/null
}
build_progress() {
  awk -F'[][/]' '/^\[[0-9]+\/[0-9]+\]/ && (tenths = int(10 * $2 / $3)) > shown {
    shown = tenths
    printf "      %d%% of %d steps\n", 10 * tenths, $3
    fflush()
  }'
}

# logged NAME COMMAND...: runs the command without standard input and writes its output to a log. If it fails, prints
# the end of the log and exits. The function named by $progress reads the output, too.
logged() {
  local log=$logs/$1.log status=0
  mkdir -p "$logs"
  "${@:2}" 2>&1 </dev/null | tee "$log" | "${progress:-no_progress}" || status=$?
  ((status == 0)) && return
  printf -- '---- the last lines of %s ----\n' "$log" >&2
  tail -n 150 "$log" >&2
  printf -- '----\n' >&2
  fail "${*:2:3} ... failed with status $status; everything it said is in $log"
}
