# shellcheck shell=bash
# ./run fuzz: runs all programs of fuzz/ for a bounded number of inputs, or one of them until it is stopped.

# Each row is a program and its number of inputs. Together they take minutes on two cores, since the build is not
# optimised.
fuzz_programs=(
  "session             20000"
  "lab_image           20000"
  "linux_machine       10000"
  "texts               120000"
)
fuzz_options=(-timeout=60 -rss_limit_mb=2048)
fuzz_build=build/fuzz # where the programs are

fuzz_configure_and_compile() {
  local -a options
  sanitized -O1 address,undefined
  options+=(-DTAVRENIX_FUZZ=ON)
  configure fuzz "${options[@]}"
  compile fuzz --target fuzz-programs
}

# fuzz_program NAME ARGUMENT...: runs a program with these arguments of libFuzzer.
fuzz_program() {
  local -a options=("${fuzz_options[@]}" -dict=fuzz/words.dict "-artifact_prefix=build/fuzz/findings/$1-")
  mkdir -p build/fuzz/findings
  export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:malloc_context_size=12 UBSAN_OPTIONS=print_stacktrace=1
  "$fuzz_build/fuzz/fuzz-$1" "${options[@]}" "${@:2}"
}

# fuzz_bounded NAME RUNS: runs the seeds, and then inputs that a fixed random sequence makes of them. They are the same
# every time.
fuzz_bounded() {
  local corpus=build/fuzz/bounded/$1
  local -a seeds=()
  [[ -d fuzz/seeds/$1 ]] && seeds=("fuzz/seeds/$1")
  rm -rf -- "$corpus"
  mkdir -p "$corpus"
  fuzz_program "$1" -seed=1 -entropic=0 -runs="$2" "$corpus" "${seeds[@]}"
}

# fuzz_all BUILD [SHARE]: runs each program for its number of inputs, or for one of SHARE of them, as many programs at a
# time as there are processors.
fuzz_all() {
  local fuzz_build=$1 share=${2:-1}
  local row name runs failed=build/fuzz/failed
  rm -f "$failed"
  for row in "${fuzz_programs[@]}"; do
    read -r name runs <<<"$row"
    while (($(jobs -rp | wc -l) >= jobs)); do wait -n || true; done
    { (logged "fuzz-$name" fuzz_bounded "$name" $((runs / share))) || echo "$name" >>"$failed"; } &
  done
  wait
  [[ ! -e $failed ]] && return
  echo "findings in: $(xargs <"$failed"). Each log names the file in build/fuzz/findings/ that holds the input;"
  echo "./run fuzz NAME FILE runs it again. Once mended, it becomes a test (see CONTRIBUTING.md)."
  return 1
}

# fuzz_long NAME ARGUMENT...: runs a program until it is stopped, and keeps inputs that reach new code in
# build/fuzz/corpus/NAME. If there are files among the arguments, runs each of them once instead.
fuzz_long() {
  local argument corpus=build/fuzz/corpus/$1
  local -a seeds=()
  [[ -d fuzz/seeds/$1 ]] && seeds=("fuzz/seeds/$1")
  for argument in "${@:2}"; do
    [[ -f $argument ]] && { fuzz_program "$@"; return; }
  done
  mkdir -p "$corpus"
  fuzz_program "$@" "$corpus" "${seeds[@]}"
}

fuzz_known() {
  printf '%s\n' "${fuzz_programs[@]%% *}" | grep -qxF -e "$1" && return
  echo "run: unknown fuzzing program '$1'; there are:" >&2
  printf '  %s\n' "${fuzz_programs[@]%% *}" >&2
  return 2
}
