# shellcheck shell=bash
# Installing a build, and the Debian packages.

# install_build PREFIX: build/install to where it belongs, with the loader told of a new library where that may be.
install_build() {
  logged install cmake --install build/install --prefix "$1"
  if ((EUID == 0)); then ldconfig; fi
  sed "s|^|  |" build/install/install_manifest.txt
}

# The packages are built in a copy of what git knows, since Debian's tools write into the tree and beside it.
make_packages() {
  local copy=build/package/tavrenix
  rm -rf build/package
  mkdir -p "$copy"
  tracked '*' | xargs -0 cp --parents -P -t "$copy" --
  if command -v ccache >/dev/null; then
    # Debian's tools give the build a home of its own, so ccache is told where its own things are.
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

# The packages close no bug of Debian's, as they are not of Debian's archive.
lint_packages() {
  lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs \
    build/package/*.changes
}

# On a bare Debian in a folder: installs the packages, runs what they bring, removes them, and compares the files.
try_packages() {
  local folder=$1
  mmdebstrap --quiet --variant=minbase bookworm "$folder" || return
  mkdir "$folder/packages"
  cp build/package/*.deb "$folder/packages"
  rm -f "$folder"/packages/*-dbgsym_*
  cp tools/try-packages "$folder/packages"
  chroot "$folder" /packages/try-packages
}

# in_bare_folder COMMAND...: with one more argument, a new folder that is gone afterwards.
in_bare_folder() (
  folder=$(mktemp -d)
  trap 'rm -rf --one-file-system -- "$folder"' EXIT
  chmod 755 "$folder"
  "$@" "$folder"
)
