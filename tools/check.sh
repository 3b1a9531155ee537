# shellcheck shell=bash
# ./run check: what is asked of a change beyond its tests. A step is one row of `checks` and one function check_NAME,
# which tells what was wrong and returns non-zero, or $skipped where it cannot be done here.

skipped=77
checks=(
  "format    every source is in the project's format"
  "walls     no folder includes what it may not use"
  "headers   each public header compiles alone as C11 and as C++20, with both compilers"
  "exports   the shared library shows the names of the public headers and no other"
  "manuals   the manual pages render without warnings and name all that the headers declare"
  "package   the Debian packages please lintian, install, run and leave nothing behind on a bare Debian"
  "shell     shellcheck finds nothing in the shell scripts"
  "scripts   the tests of the scripts themselves"
  "address   everything builds with clang, and all tests pass under the address, leak and undefined-behaviour sanitizers"
  "thread    all tests pass under the thread sanitizer"
  "fuzz      the fuzzing programs find nothing in a bounded count of runs"
  "tidy      clang-tidy finds nothing"
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
}

manual_faults() {
  local page name
  local -a pages
  mapfile -d '' -t pages < <(tracked 'docs/man/*.[1-9]')
  ((${#pages[@]})) || echo "no manual page found"
  # Pages that others install are not asked for.
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

check_package() {
  ((EUID == 0)) || { echo "a bare Debian is made by the superuser alone"; return "$skipped"; }
  same_version_everywhere
  logged package make_packages
  lint_packages
  logged bare in_bare_folder try_packages
}

# The sourced files are judged along with the scripts that source them. What runs in the guest of tests/kernel is for
# busybox, whose shell shellcheck does not know.
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

# build_and_test NAME OPTION...: a build of its own with all tests.
build_and_test() {
  local name=$1
  configure_quietly "$name" -DTAVRENIX_TESTS=ON "${@:2}"
  compile_quietly "$name"
  logged "$name-test" "${test_prefix[@]}" \
    ctest --test-dir "build/$name" --output-on-failure --no-tests=error -j "$jobs"
  grep 'tests passed' "$logs/$name-test.log"
}
test_prefix=()

clang=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)

# sanitized FLAGS SANITIZERS: the options of such a build.
sanitized() {
  local flags="-g1 $1"
  options=(-DCMAKE_BUILD_TYPE=Debug "-DCMAKE_C_FLAGS_DEBUG=$flags" "-DCMAKE_CXX_FLAGS_DEBUG=$flags"
    "-DTAVRENIX_SANITIZE=$2")
}

# clang_and_address LEVEL: as the tests want it without optimising, which halves the minutes that clang takes.
clang_and_address() {
  sanitized "$1" address,undefined
  options+=("${clang[@]}")
}

check_address() {
  local -a options
  clang_and_address -O0
  export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1
  export UBSAN_OPTIONS=print_stacktrace=1
  build_and_test address "${options[@]}"
}

check_thread() {
  export TSAN_OPTIONS=second_deadlock_stack=1
  # The sanitizer's fixed memory layout does not survive a kernel that spreads addresses widely.
  if setarch -R true 2>/dev/null; then
    test_prefix=(setarch -R)
  fi
  # Instrumentation leads g++'s flow warnings to wrong guesses; the other builds judge the warnings (-w).
  local -a options
  sanitized "-O1 -w" thread
  build_and_test thread "${options[@]}"
}

check_fuzz() {
  fuzz_configure_and_compile _quietly
  fuzz_all
}

# After that many states the analyzer lets go of a function. By its own bound a few files take most of the time.
tidy_bound=(--extra-arg={-Xclang,-analyzer-config,-Xclang,max-nodes=30000})

tidy_all() {
  tracked {runtime,model,library,cli,lab,linux}/'*.cpp' |
    xargs -0 -n 1 -P "$jobs" clang-tidy -p build/address --quiet "${tidy_bound[@]}" 2>&1 | sed '/ generated\.$/d'
}

# One build for two questions, since a build takes minutes.
check_tidy() {
  local -a options
  clang_and_address -O0
  configure_quietly address -DTAVRENIX_TESTS=ON "${options[@]}"
  logged tidy tidy_all
}

valgrind_demo() {
  local folder=$1 lost=definite,indirect,possible
  local -a words
  local command
  for command in "${demo_commands[@]}"; do
    read -ra words <<<"$command"
    # What is still reachable at the end is the host, which outlives the exit handlers that ask it on purpose.
    valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=$lost --errors-for-leak-kinds=$lost \
      build/test/lab/tavrenix-lab "$folder/image.json" "${words[@]}" >"$folder/out" ||
      { echo "in: tavrenix-lab image.json $command"; return 1; }
  done
}

check_valgrind() {
  configure_quietly test -DTAVRENIX_TESTS=ON
  compile_quietly test
  in_demo_folder valgrind_demo
}

# Runs each named step, all of them when none is named, to the end even when one fails.
check_main() {
  local row name status wanted=("$@")
  local -a failed=()
  ((${#wanted[@]})) || wanted=("${checks[@]%% *}")
  for name in "${wanted[@]}"; do
    if ! printf '%s\n' "${checks[@]%% *}" | grep -qxF -e "$name"; then
      [[ $name == help ]] || { echo "run: unknown check '$name'" >&2; status=2; }
      printf '  %s\n' "${checks[@]}"
      exit "${status:-0}"
    fi
  done
  steps $((${#wanted[@]} + 1))
  install_packages check
  for row in "${checks[@]}"; do
    name=${row%% *}
    [[ " ${wanted[*]} " == *" $name "* ]] || continue
    step "$row"
    # Not in a condition: that would switch off `set -e` inside.
    set +e
    (set -e; "check_$name")
    status=$?
    set -e
    case $status in
      0) echo "      ok" ;;
      "$skipped") echo "      skipped" ;;
      *) echo "      FAILED" && failed+=("$name") ;;
    esac
  done
  ((${#failed[@]} == 0)) || fail "failed: ${failed[*]}"
  echo "All checks passed."
}
