# shellcheck shell=bash
# ./run fuzz: the programs of fuzz/, all of them for a bounded count, or one for as long as one likes.

# Program and runs: together about a minute on two cores.
fuzz_programs=(
  "properties          10000"
  "image               20000"
  "command_line        30000"
  "linux_machine       10000"
  "device_mapper_answers 100000"
  "device_mapper_lines 120000"
  "daemon_replies      80000"
  "uevents             120000"
  "attributes          100000"
  "vpd                 200000"
)
fuzz_options=(-timeout=60 -rss_limit_mb=2048)

fuzz_configure_and_compile() {
  local -a options
  clang_and_address -O1
  options+=(-DTAVRENIX_FUZZ=ON)
  "configure$1" fuzz "${options[@]}"
  "compile$1" fuzz --target fuzz-programs
}

# fuzz_program NAME ARGUMENT...: with libFuzzer's arguments.
fuzz_program() {
  local -a options=("${fuzz_options[@]}" "-artifact_prefix=build/fuzz/findings/$1-")
  [[ -f fuzz/$1.dict ]] && options+=("-dict=fuzz/$1.dict")
  mkdir -p build/fuzz/findings
  export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:malloc_context_size=12 UBSAN_OPTIONS=print_stacktrace=1
  "build/fuzz/fuzz/fuzz-$1" "${options[@]}" "${@:2}"
}

# fuzz_bounded NAME RUNS: the seeds first, then what a fixed random sequence makes of them: the same every time.
fuzz_bounded() {
  local corpus=build/fuzz/bounded/$1
  rm -rf -- "$corpus"
  mkdir -p "$corpus"
  fuzz_program "$1" -seed=1 -entropic=0 -runs="$2" "$corpus" "fuzz/seeds/$1"
}

# Each program for its count, as many at a time as there are processors.
fuzz_all() {
  local row name runs failed=build/fuzz/failed
  rm -f "$failed"
  for row in "${fuzz_programs[@]}"; do
    read -r name runs <<<"$row"
    while (($(jobs -rp | wc -l) >= jobs)); do wait -n || true; done
    { (logged "fuzz-$name" fuzz_bounded "$name" "$runs") || echo "$name" >>"$failed"; } &
  done
  wait
  [[ ! -e $failed ]] && return
  echo "findings in: $(xargs <"$failed"). Each log names the file in build/fuzz/findings/ that holds the input;"
  echo "./run fuzz NAME FILE runs it again. Once mended, it becomes a test (see CONTRIBUTING.md)."
  return 1
}

# fuzz_long NAME ARGUMENT...: what is found new is kept in build/fuzz/corpus/NAME. Files among the arguments are run
# once each instead.
fuzz_long() {
  local argument corpus=build/fuzz/corpus/$1
  for argument in "${@:2}"; do
    [[ -f $argument ]] && { fuzz_program "$@"; return; }
  done
  mkdir -p "$corpus"
  fuzz_program "$@" "$corpus" "fuzz/seeds/$1"
}

fuzz_known() {
  printf '%s\n' "${fuzz_programs[@]%% *}" | grep -qxF -e "$1" && return
  echo "run: unknown fuzzing program '$1'; there are:" >&2
  printf '  %s\n' "${fuzz_programs[@]%% *}" >&2
  return 2
}
