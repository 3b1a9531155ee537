# shellcheck shell=bash
# Installs and removes a build, and makes the Debian packages.

# The record of an installation lists its files, itself included, and the folders that it made, which end in a slash.
# All are relative to the prefix, which may be moved as a whole.
install_record=share/tavrenix/installed

folders_below() {
  [[ ! -d $1 ]] || find "$1" -mindepth 1 -type d -printf '%P/\n' | LC_ALL=C sort
}

# The loader finds a new library only once ldconfig has put it into its list.
tell_loader() {
  ((EUID != 0)) || ldconfig
}

# install_build BUILD PREFIX: removes an earlier installation below the prefix and installs the build.
install_build() {
  local build=$1 prefix=$2 before
  [[ ! -f $prefix/$install_record ]] || uninstall_from "$prefix"
  before=$(folders_below "$prefix")
  logged install cmake --install "$build" --prefix "$prefix"
  {
    sed -n "s|^$prefix/||p" "$build/install_manifest.txt"
    echo
    echo "$install_record"
    LC_ALL=C comm -13 <(echo "$before") <(folders_below "$prefix")
  } | grep . | LC_ALL=C sort >"$build/installed"
  cp -- "$build/installed" "$prefix/$install_record"
  tell_loader
}

# uninstall_from PREFIX: removes the files and folders in the record. A folder stays if it holds anything else.
uninstall_from() {
  local prefix=$1 i
  local -a names
  [[ -f $prefix/$install_record ]] || fail "nothing to remove: $prefix/$install_record, which ./run install writes, is not there"
  mapfile -t names <"$prefix/$install_record"
  for ((i = ${#names[@]} - 1; i >= 0; --i)); do # backwards, as a folder is listed before what it holds
    case ${names[i]} in
      */) [[ ! -d $prefix/${names[i]} ]] || rmdir --ignore-fail-on-non-empty -- "$prefix/${names[i]}" ;;
      *) rm -f -- "$prefix/${names[i]}" ;;
    esac
  done
  tell_loader
}

# The packages are built in a copy of what git knows, since Debian's tools write into the tree and beside it.
make_packages() {
  local copy=build/package/tavrenix
  rm -rf build/package
  mkdir -p "$copy"
  tracked '*' | xargs -0 cp --parents -P -t "$copy" --
  if command -v ccache >/dev/null; then
    # Debian's tools set another home folder for the build, so ccache must be told where its cache is.
    local -x CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR
    CCACHE_DIR=$(ccache --get-config=cache_dir)
  fi
  (cd "$copy" && dpkg-buildpackage --build=binary --no-sign --jobs="$jobs")
}

project_version() {
  sed -n 's/^project(tavrenix VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt
}

same_version_everywhere() {
  [[ $(dpkg-parsechangelog -S Version) == "$(project_version)-"* ]] ||
    fail "debian/changelog is not of version $(project_version), which CMakeLists.txt has"
}

# The packages are not for Debian's archive, so their first upload closes no bug there.
lint_packages() {
  lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs \
    build/package/*.changes
}

# try_packages FOLDER: makes a bare Debian in the folder and runs tools/try-packages there.
try_packages() {
  local folder=$1
  mmdebstrap --quiet --variant=minbase bookworm "$folder" || return
  mkdir "$folder/packages"
  cp build/package/*.deb "$folder/packages"
  rm -f "$folder"/packages/*-dbgsym_*
  cp tools/try-packages "$folder/packages"
  chroot "$folder" /packages/try-packages
}

# in_bare_folder COMMAND...: runs the command with one more argument, a new folder, and removes the folder afterwards.
in_bare_folder() (
  folder=$(mktemp -d)
  trap 'rm -rf --one-file-system -- "$folder"' EXIT
  chmod 755 "$folder"
  "$@" "$folder"
)
