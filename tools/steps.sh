# shellcheck shell=bash
# What a verb says while it works: numbered steps, and a log for what is worth reading only on failure.

step_count=0
step_total=0
logs=build/logs

# steps N: the verb that starts now has N steps.
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

# What becomes of a logged command's output besides the log: nothing, or how far a build is, by ninja's own counts.
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

# logged NAME COMMAND...: runs it without standard input, its output in a log; a failure shows the log's end and exits.
# The function named by $progress sees the output too.
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
