# shellcheck shell=bash
# CMake builds, each in its own folder under build/, and the list of sources.

jobs=${JOBS:-$(nproc)}
# What one checkout has compiled serves the others on this machine too.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

# configure NAME OPTION...: prepares build/NAME. ccache is used where there is one.
configure_quietly() {
  local -a launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  logged "$1-configure" cmake -S . -B "build/$1" -G Ninja "${launcher[@]}" "${@:2}"
}

# compile NAME OPTION...: builds build/NAME, as CMake's options say.
compile_quietly() {
  logged "$1-build" cmake --build "build/$1" -j "$jobs" "${@:2}"
}

configure() {
  step "configuring build/$1"
  configure_quietly "$@"
}

compile() {
  step "building build/$1 with $jobs jobs (output in $logs/$1-build.log)"
  progress=build_progress compile_quietly "$@"
}

# tracked PATTERN...: the files of the tree that match, each ended by a NUL. A tree of another owner is read as well.
tracked() {
  git -c safe.directory="$root" ls-files -z -- "$@"
}

tracked_sources() {
  tracked '*.h' '*.hpp' '*.c' '*.cpp'
}
