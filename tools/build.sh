# shellcheck shell=bash
# CMake builds, each in its own folder under build/, and the list of sources.

jobs=${JOBS:-$(nproc)}
# Lets all checkouts on one machine share their cache of compiled files.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

# configure NAME OPTION...: prepares build/NAME, with ccache if it is installed.
configure_quietly() {
  local -a launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  logged "$1-configure" cmake -S . -B "build/$1" -G Ninja "${launcher[@]}" "${@:2}"
}

# For builds that are made anew each time: several files are compiled as one, since most of the time goes into the
# headers that they share. The build of the packages compiles each file alone, and so shows whether a file lacks an
# include.
together=(-DCMAKE_UNITY_BUILD=ON)

# compile NAME OPTION...: builds build/NAME with these options of `cmake --build`.
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

# tracked PATTERN...: prints the files of git that match, each with a NUL at its end. It also works if another user owns
# the tree.
tracked() {
  git -c safe.directory="$root" ls-files -z -- "$@"
}

tracked_sources() {
  tracked '*.h' '*.hpp' '*.c' '*.cpp'
}
