# shellcheck shell=bash
# The Debian packages that the verbs need, and their installation. Nothing else in the tree calls apt-get.

declare -A packages
packages[build]="g++ cmake ninja-build pkg-config nlohmann-json3-dev libmicrohttpd-dev libncurses-dev"
packages[test]="${packages[build]} gcc libgtest-dev libgmock-dev python3 python3-cram python3-jsonschema prometheus zsh graphviz monitoring-plugins-basic libmonitoring-plugin-perl"
packages[package]="${packages[build]} debhelper dpkg-dev fakeroot git lintian"
packages[coverage]="${packages[test]} clang llvm libclang-rt-14-dev"
packages[mutants]="${packages[test]} git python3-clang-14"
packages[bench]="${packages[build]} libbenchmark-dev python3"
packages[fuzz]="${packages[build]} clang libclang-rt-14-dev"
packages[fleet]="${packages[build]} python3 prometheus prometheus-alertmanager"
packages[kernel]="${packages[test]} qemu-system-x86 cpio"
packages[format]="clang-format git"
packages[check]="${packages[test]} ${packages[format]} ${packages[fuzz]} clang-tidy valgrind mandoc man-db groff shellcheck python3-clang-14 ${packages[package]} mmdebstrap"

package_installed() {
  dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# missing_packages NAME...: prints the packages that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    package_installed "$package" || printf '%s\n' "$package"
  done
}

# apt_get ARGUMENT...: runs apt-get as the superuser, so that it asks no question.
apt_get() {
  local as_root=()
  ((EUID == 0)) || as_root=(sudo)
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=120 "$@" \
    >>"$logs/apt.log" 2>&1 </dev/null
}

packages_by_hand() {
  local sudo=
  if ((EUID != 0)) && command -v sudo >/dev/null; then sudo="sudo "; fi
  printf 'run: could not install: %s\n' "$*" >&2
  grep '^E: ' "$logs/apt.log" >&2 || true
  printf 'Please run this by hand as the superuser, then start again:\n' >&2
  printf '  %sapt-get update && %sapt-get install -y --no-install-recommends %s\n' "$sudo" "$sudo" "$*" >&2
  exit 1
}

# install_packages LIST: a step that installs the packages of the list. Does not call apt-get if all are installed.
install_packages() {
  local -a list missing
  read -ra list <<<"${packages[$1]}"
  if ! command -v dpkg-query >/dev/null; then
    step "packages: not a Debian system, taken to be there: ${list[*]}"
    return
  fi
  mapfile -t missing < <(missing_packages "${list[@]}")
  if ((${#missing[@]} == 0)); then
    step "packages: all present"
    return
  fi
  step "packages: installing ${missing[*]}"
  mkdir -p "$logs"
  : >"$logs/apt.log"
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    echo "E: neither the superuser nor sudo" >"$logs/apt.log"
    packages_by_hand "${missing[@]}"
  fi
  # A fresh system has no package lists, and old lists name files that are gone. Either makes the first attempt fail; an
  # update mends both.
  apt_get install --no-install-recommends "${missing[@]}" ||
    { apt_get update && apt_get install --no-install-recommends "${missing[@]}"; } || true
  mapfile -t missing < <(missing_packages "${list[@]}")
  ((${#missing[@]} == 0)) || packages_by_hand "${missing[@]}"
}
