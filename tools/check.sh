# shellcheck shell=bash
# ./run check: what CI asks of a change beyond its tests. A step is one row of `checks` and one function check_NAME. The
# function prints what is wrong and returns non-zero, or returns $skipped if this machine cannot run the step.

skipped=77
checks=(
  "format    every source is in the project's format"
  "walls     no folder includes what it may not use, and no two files have the same name"
  "ratio     there are at most 36 lines of tests for every 100 lines of code"
  "headers   each public header compiles alone as C11 and as C++20, with both compilers"
  "exports   the shared library shows the names of the public headers and no other, and tavrenix-monitor changes nothing"
  "manuals   the manual pages render without warnings and name all that the headers declare"
  "package   the Debian packages please lintian, install, run and leave nothing behind on a bare Debian"
  "shell     shellcheck finds nothing in the shell scripts"
  "scripts   the tests of the scripts themselves"
  "address   everything builds with clang, and all tests pass under the address, leak and undefined-behaviour sanitizers"
  "thread    the tests of what has threads pass under the thread sanitizer"
  "fuzz      the fuzzing programs find nothing in a bounded count of runs, a quarter of those of ./run fuzz"
  "tidy      clang-tidy finds nothing"
  "documents the sessions that documents show are what the programs print"
  "valgrind  memcheck finds nothing in the commands of the demo"
)

check_format() {
  local -a unformatted
  mapfile -t unformatted < <(tracked_sources | xargs -0 clang-format --dry-run 2>&1 |
    sed -n 's/^\(.*\):[0-9]*:[0-9]*: .*/\1/p' | sort -u)
  ((${#unformatted[@]} == 0)) && return
  printf '%s\n' "${unformatted[@]}" "./run format rewrites them."
  return 1
}

check_walls() {
  tools/check-walls --self-test && tools/check-walls
}

check_ratio() {
  tools/ratio
}

header_warnings=(-Wall -Wextra -Wpedantic -pedantic-errors -Werror -Wshadow -Wconversion -Wsign-conversion
  -Wcast-qual -Wundef)

check_headers() {
  local header compiler status=0
  local -a headers
  mapfile -d '' -t headers < <(tracked 'include/tavrenix/*.h' 'include/tavrenix/*.hpp')
  ((${#headers[@]})) || { echo "no public header found"; return 1; }
  for header in "${headers[@]}"; do
    for compiler in "gcc -x c -std=c11 -Wstrict-prototypes" "clang -x c -std=c11 -Wstrict-prototypes" \
      "g++ -x c++ -std=c++20" "clang++ -x c++ -std=c++20"; do
      [[ $header == *.hpp && $compiler == *"-x c "* ]] && continue
      # shellcheck disable=SC2086 # the compiler and its options are words
      echo "#include <${header#include/}>" |
        $compiler "${header_warnings[@]}" -Iinclude -fsyntax-only - || status=1
    done
  done
  return "$status"
}

check_exports() {
  tools/check-exports --self-test
  configure_quietly test -DTAVRENIX_TESTS=ON
  compile_quietly test
  tools/check-exports build/test/linux/libtavrenix.so
  diff <(tools/check-exports --changing build/test/linux/tavrenix-monitor) /dev/null
  diff <(tools/check-exports --changing build/test/linux/tavrenix-maintain) \
    <(printf '%s\n' MPIOLogicalUnitPathDisable MPIOLogicalUnitPathEnable)
}

manual_faults() {
  local page name
  local -a pages
  mapfile -d '' -t pages < <(tracked 'docs/man/*.[1-9]')
  ((${#pages[@]})) || echo "no manual page found"
  # The pages may refer to pages of other packages, which need not be installed.
  mandoc -T lint -W style "${pages[@]}" | grep -v 'referenced manual not found' || true
  for page in "${pages[@]}"; do
    LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null |
      sed "s|^|$page: |"
  done
  while IFS= read -r name; do
    grep -qw -e "$name" docs/man/libtavrenix.3 || echo "docs/man/libtavrenix.3: no word of $name"
  done < <(tools/check-exports --names)
}

check_manuals() {
  local faults
  faults=$(manual_faults)
  [[ -z $faults ]] || { echo "$faults"; return 1; }
}

# Compiles with little optimisation and without debug information, which takes half of the time. ./run test compiles the
# same code as it is meant to be.
check_package() {
  ((EUID == 0)) || { echo "a bare Debian is made by the superuser alone"; return "$skipped"; }
  same_version_everywhere
  local -x DEB_BUILD_OPTIONS=noautodbgsym DEB_CFLAGS_APPEND="-O1 -g0" DEB_CXXFLAGS_APPEND="-O1 -g0"
  logged package make_packages
  lint_packages
  logged bare in_bare_folder try_packages
}

# Sourced files are checked along with the scripts that source them. The scripts of the guest in tests/kernel are for
# the shell of busybox, which shellcheck does not know.
check_shell() {
  local file first
  local -a scripts=()
  while IFS= read -r -d '' file; do
    first=
    [[ -f $file ]] && IFS= read -r first <"$file"
    [[ $first =~ ^'#!'.*sh$ ]] && scripts+=("$file")
  done < <(tracked '*' ':!*.cpp' ':!*.hpp' ':!*.t' ':!fuzz/seeds/*' ':!tests/kernel/guest/*' ':!tests/kernel/scenarios/*')
  shellcheck -x -a "${scripts[@]}"
}

check_scripts() {
  cram3 --shell=/bin/bash tools/tests/*.t
}

# test_build NAME OPTION...: runs the tests of build/NAME, with these options of ctest.
test_build() {
  logged "$1-test" "${test_prefix[@]}" \
    ctest --test-dir "build/$1" --output-on-failure --no-tests=error -j "$jobs" "${@:2}"
  grep 'tests passed' "$logs/$1-test.log"
}
test_prefix=()

# sanitized LEVEL SANITIZERS: sets `options` to those of a build by clang at this optimisation level, with these
# sanitizers.
sanitized() {
  local flags="-g1 $1"
  options=(-DCMAKE_BUILD_TYPE=Debug "-DCMAKE_C_FLAGS_DEBUG=$flags" "-DCMAKE_CXX_FLAGS_DEBUG=$flags"
    "-DTAVRENIX_SANITIZE=$2" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
    "${together[@]}" -DCMAKE_UNITY_BUILD_BATCH_SIZE=0)
}

# Sets the options of one build for the tests, the fuzzing programs and clang-tidy, since a build takes minutes. With
# optimisation it would take twice as long.
address_build() {
  sanitized -O0 address,undefined
  options+=(-DTAVRENIX_FUZZ=ON)
}

check_address() {
  local -a options
  address_build
  export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1
  export UBSAN_OPTIONS=print_stacktrace=1
  configure_quietly address -DTAVRENIX_TESTS=ON "${options[@]}"
  compile_quietly address
  test_build address
}

check_thread() {
  export TSAN_OPTIONS=second_deadlock_stack=1
  # The thread sanitizer needs a fixed memory layout. Kernels that spread addresses widely break it, so turn that off if
  # possible.
  if setarch -R true 2>/dev/null; then
    test_prefix=(setarch -R)
  fi
  local -a options
  sanitized -O0 thread
  configure_quietly thread -DTAVRENIX_TESTS=ON "${options[@]}"
  compile_quietly thread --target threaded-tests
  test_build thread --label-regex threads
}

check_fuzz() {
  local -a options
  address_build
  configure_quietly address -DTAVRENIX_TESTS=ON "${options[@]}"
  compile_quietly address --target fuzz-programs
  fuzz_all build/address 4
}

# clang-tidy checks the joined files of a folder, as they are compiled, because most of the time goes into the headers
# that they share. max-nodes is the number of states after which the analyzer gives a function up. With its default a
# few functions take most of the time.
tidy_options=(-p build/address --quiet --checks=-bugprone-suspicious-include
  --extra-arg={-Xclang,-analyzer-config,-Xclang,max-nodes=30000})

tidy_joined() {
  find build/address -name 'unity_*.cxx' ! -path 'build/address/tests/*' ! -path 'build/address/fuzz/*'
}

tidy_all() {
  local file
  while IFS= read -r -d '' file; do
    tidy_joined | xargs grep -qF "#include \"$root/$file\"" || { echo "no build names $file"; return 1; }
  done < <(tracked {runtime,host,model,library,cli,monitor,maintain,lab,linux}/'*.cpp')
  tidy_joined | xargs -n 1 -P "$jobs" clang-tidy "${tidy_options[@]}" 2>&1 | sed '/ generated\.$/d'
}

check_tidy() {
  local -a options
  address_build
  configure_quietly address -DTAVRENIX_TESTS=ON "${options[@]}"
  logged tidy tidy_all
}

valgrind_demo() {
  local folder=$1 lost=definite,indirect,possible
  local -a words
  local command
  for command in "${demo_commands[@]}"; do
    read -ra words <<<"$command"
    # Memory that is still reachable at the end is the host. On purpose it is never destroyed, because exit handlers use
    # it.
    valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=$lost --errors-for-leak-kinds=$lost \
      build/test/lab/tavrenix-lab "$folder/image.json" "${words[@]}" >"$folder/out" ||
      { echo "in: tavrenix-lab image.json $command"; return 1; }
  done
}

check_documents() {
  configure_quietly test -DTAVRENIX_TESTS=ON
  compile_quietly test
  tools/check-documents build/test README.md
}

check_valgrind() {
  configure_quietly test -DTAVRENIX_TESTS=ON
  compile_quietly test
  in_demo_folder valgrind_demo
}

# Steps on build/address, in this order. They run beside the others, so that no processor waits for a step that is at its
# last job.
on_address=(address tidy fuzz)

# run_checks NAME...: runs these steps. Goes on after a step that fails, and adds it to the list of those.
run_checks() {
  local name status out
  for name in "$@"; do
    out=$logs/check-$name.log
    # A call in a condition would switch off `set -e` inside the function.
    set +e
    (set -e; "check_$name") >"$out" 2>&1
    status=$?
    set -e
    case $status in
      0) echo "      $name: ok" ;;
      "$skipped") echo "      $name: skipped" ;;
      *) echo "      $name: FAILED" && echo "$name" >>"$logs/check-failed" ;;
    esac >>"$out"
    cat "$out"
  done
}

# Runs the named steps, or all if none is named, in the order of the table.
check_main() {
  local row name status wanted=("$@")
  local -a beside=() others=()
  ((${#wanted[@]})) || wanted=("${checks[@]%% *}")
  for name in "${wanted[@]}"; do
    if ! printf '%s\n' "${checks[@]%% *}" | grep -qxF -e "$name"; then
      [[ $name == help ]] || { echo "run: unknown check '$name'" >&2; status=2; }
      printf '  %s\n' "${checks[@]}"
      exit "${status:-0}"
    fi
  done
  steps 2
  install_packages check
  step "checks: ${wanted[*]}"
  for name in "${on_address[@]}" "${checks[@]%% *}"; do
    [[ " ${wanted[*]} " == *" $name "* && " ${beside[*]} " != *" $name "* ]] || continue
    if [[ " ${on_address[*]} " == *" $name "* ]]; then beside+=("$name"); else others+=("$name"); fi
  done
  mkdir -p "$logs"
  rm -f "$logs/check-failed"
  # A command in the background ignores Ctrl-C.
  trap 'trap - TERM && kill 0' INT
  run_checks "${beside[@]}" &
  local lane=$!
  run_checks "${others[@]}"
  wait "$lane"
  [[ ! -e $logs/check-failed ]] || fail "failed: $(xargs <"$logs/check-failed")"
  echo "All checks passed."
}
