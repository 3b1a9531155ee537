# shellcheck shell=bash
# shellcheck disable=SC2154 # work, tools and boots come from run
# Debian's packages that the guest is made of: downloaded and unpacked below build/kernel, never installed.

guest_packages=(
  busybox-static udev multipath-tools kpartx dmsetup strace e2fsprogs lvm2 util-linux fdisk
  # the shared libraries that these need
  libc6 libgcc-s1 libstdc++6 libacl1 libaio1 libblkid1 libbsd0 libcap2 libcom-err2 libdevmapper-event1.02.1
  libdevmapper1.02.1 libedit2 libext2fs2 libfdisk1 libgcrypt20 libgpg-error0 libjson-c5 libkmod2 liblz4-1
  liblzma5 libmd0 libmount1 libpcre2-8-0 libreadline8 libselinux1 libsmartcols1 libssl3 libsystemd0 libtinfo6
  libudev1 libunwind8 liburcu8 libuuid1 libzstd1
)

# linux-image-amd64 is empty and depends on the kernel of the day.
kernel_package() {
  apt-cache depends linux-image-amd64 | awk '/Depends: linux-image-/ { print $2; exit }'
}

# Fills $work/packages, once for each list of package versions.
unpack_packages() {
  local kernel versions deb
  kernel=$(kernel_package)
  if [[ -z $kernel ]]; then
    echo "tests/kernel/run: apt knows no linux-image-amd64; run apt-get update" >&2
    exit 2
  fi
  versions=$(apt-get download --print-uris "$kernel" "${guest_packages[@]}" | awk '{ print $2 }')
  if [[ -f $work/packages.list && $versions == "$(<"$work/packages.list")" ]]; then
    return
  fi
  echo "fetching $(wc -l <<<"$versions") packages"
  rm -rf "$work/packages" "$work/packages.list" "$work/debs"
  mkdir -p "$work/packages" "$work/debs"
  (cd "$work/debs" && apt-get download -qq "$kernel" "${guest_packages[@]}" 2>../apt.log) ||
    { cat "$work/apt.log" >&2; exit 2; }
  for deb in "$work"/debs/*.deb; do
    dpkg-deb -x "$deb" "$work/packages"
  done
  rm -rf "$work/debs"
  printf '%s\n' "$versions" >"$work/packages.list"
}
