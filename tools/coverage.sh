# shellcheck shell=bash
# ./run coverage: counts the lines and branches that the tests reach, with the coverage counters of clang.

coverage_flags="-O1 -g1 -fprofile-instr-generate -fcoverage-mapping"
coverage_options=(-DTAVRENIX_TESTS=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
  "-DCMAKE_C_FLAGS_DEBUG=$coverage_flags" "-DCMAKE_CXX_FLAGS_DEBUG=$coverage_flags"
  "-DCMAKE_EXE_LINKER_FLAGS_DEBUG=$root/build/coverage/at_signal.o")

coverage_at_signal() {
  mkdir -p build/coverage
  clang -c -std=gnu11 -Wall -Wextra -Werror tools/coverage/at_signal.c -o build/coverage/at_signal.o
}

# Programs that the tests start are counted, too. All processes of one program share a few files of counts (%4m).
coverage_tests() {
  rm -rf build/coverage/profiles
  LLVM_PROFILE_FILE=$root/build/coverage/profiles/%4m.profraw logged coverage-test \
    ctest --test-dir build/coverage --output-on-failure --no-tests=error -j "$jobs"
}

coverage_report() {
  local folder=build/coverage program
  local -a objects=()
  llvm-profdata merge -sparse "$folder"/profiles/*.profraw -o "$folder/all.profdata"
  while IFS= read -r -d '' program; do
    objects+=(-object "$program")
  done < <(find "$folder" -type f -executable ! -name '*.bin' ! -path '*/CMakeFiles/*' -print0)
  objects=("${objects[@]:1}")
  local -a given=("${objects[@]}" "-instr-profile=$folder/all.profdata"
    '-ignore-filename-regex=/(tests|build)/|^/usr/')
  llvm-cov export -summary-only "${given[@]}" >"$folder/summary.json"
  llvm-cov show -format=html -show-branches=count -show-instantiations=false -project-title=tavrenix \
    "-output-dir=$folder/html" "${given[@]}"
  tools/coverage/table "$folder/summary.json"
  echo "Line by line: $folder/html/index.html"
}
