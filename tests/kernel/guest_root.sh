# shellcheck shell=bash
# shellcheck disable=SC2154 # work and tools come from boot-scenarios
# Makes the guest's root, an initramfs. It holds unpacked Debian packages (they are never installed), the kernel modules
# that are needed, this project's programs, and the scenarios.

# First the programs that scenarios call, then the libraries that these need.
guest_packages=(busybox-static udev multipath-tools kpartx dmsetup strace e2fsprogs util-linux fdisk
  libc6 libgcc-s1 libstdc++6 libacl1 libaio1 libblkid1 libbsd0 libcap-ng0 libcap2 libcom-err2 libdevmapper-event1.02.1
  libdevmapper1.02.1 libedit2 libext2fs2 libfdisk1 libgcrypt20 libgpg-error0 libjson-c5 libkmod2 liblz4-1
  liblzma5 libmd0 libmount1 libpcre2-8-0 libreadline8 libselinux1 libsmartcols1 libssl3 libsystemd0 libtinfo6
  libudev1 libunwind8 liburcu8 libuuid1 libzstd1)
# The modules that these depend on are added, too. crc32c_generic is named because ext4 asks for it by an alias.
guest_modules=(dm_mod dm_multipath dm_round_robin dm_queue_length dm_service_time scsi_dh_alua sd_mod
  scsi_debug tcm_loop target_core_file loop ext4 crc32c_generic)

# Fills $work/packages, again for each new list of package versions. linux-image-amd64 is empty and depends on the
# kernel.
unpack_packages() {
  local kernel versions deb
  kernel=$(apt-cache depends linux-image-amd64 | awk '/Depends: linux-image-/ { print $2; exit }')
  [[ -n $kernel ]] || { echo "tests/kernel/boot-scenarios: apt knows no linux-image-amd64; run apt-get update" >&2; exit 2; }
  versions=$(apt-get download --print-uris "$kernel" "${guest_packages[@]}" | awk '{ print $2 }')
  [[ ! -f $work/packages.list || $versions != "$(<"$work/packages.list")" ]] || return 0
  echo "fetching $(wc -l <<<"$versions") packages"
  rm -rf "$work"/{packages,packages.list,debs}
  mkdir -p "$work/packages" "$work/debs"
  (cd "$work/debs" && apt-get download -qq "$kernel" "${guest_packages[@]}" 2>../apt.log) ||
    { cat "$work/apt.log" >&2; exit 2; }
  for deb in "$work"/debs/*.deb; do dpkg-deb -x "$deb" "$work/packages"; done
  rm -rf "$work/debs"
  printf '%s\n' "$versions" >"$work/packages.list"
}

# The kernel unpacks one archive after another into the same root, so that only the last is made each time.
make_image() {
  if [[ ! -f $work/base.cpio || $work/packages.list -nt $work/base.cpio ||
    tests/kernel/guest_root.sh -nt $work/base.cpio ]]; then
    rm -rf "$work/root"
    lay_out_packages "$work/root"
    lay_out_modules "$work/root"
    pack "$work/root" >"$work/base.cpio"
  fi
  rm -rf "$work/own"
  lay_out_own "$work/own"
  { cat "$work/base.cpio" && pack "$work/own"; } >"$work/initramfs"
}

pack() {
  (cd "$1" && find . | cpio --quiet -o -H newc -R 0:0)
}

lay_out_packages() {
  local root=$1 from=$work/packages folder applet
  mkdir -p "$root"/{usr/busybox,usr/lib64,dev,proc,sys,run,tmp,mnt,etc,root,var/lib}
  for folder in bin sbin lib lib64; do
    ln -s "usr/$folder" "$root/$folder"
    mkdir -p "$root/usr/$folder"
    [[ ! -d $from/usr/$folder ]] || cp -a "$from/usr/$folder/." "$root/usr/$folder/"
    [[ ! -d $from/$folder ]] || tar -C "$from/$folder" -c --exclude=./modules . | tar -C "$root/usr/$folder" -x
  done
  cp -a "$from"/etc/. "$root/etc/"
  rm -rf "$root"/usr/lib/{udev/hwdb.d,x86_64-linux-gnu/gconv,x86_64-linux-gnu/perl-base,debug,python3}
  for applet in $("$root/bin/busybox" --list); do ln -s ../bin/busybox "$root/usr/busybox/$applet"; done
  ln -sf busybox "$root/bin/sh"
  ln -sf ../bin/busybox "$root/sbin/modprobe" # the kernel calls it by this path
}

lay_out_modules() {
  local root=$1 from=$work/packages version
  version=$(basename -- "$from"/lib/modules/*)
  "$from/bin/busybox" depmod -b "$from" "$version"
  awk -v wanted=" ${guest_modules[*]} " '
    { path = $1; sub(/:$/, "", path); name = path; sub(/.*\//, "", name); sub(/\.ko.*/, "", name); gsub(/-/, "_", name) }
    index(wanted, " " name " ") { print path; for (i = 2; i <= NF; i++) print $i }
  ' "$from/lib/modules/$version/modules.dep" | sort -u >"$work/modules.list"
  mkdir -p "$root/lib/modules/$version"
  tar -C "$from/lib/modules/$version" -c -T "$work/modules.list" modules.builtin modules.order |
    tar -C "$root/lib/modules/$version" -x
  "$from/bin/busybox" depmod -b "$root" "$version"
  cp "$from"/boot/vmlinuz-* "$work/vmlinuz"
}

lay_out_own() {
  local own=$1 program library
  mkdir -p "$own"/{tests,etc,usr/bin,usr/lib/x86_64-linux-gnu}
  cp tests/kernel/guest/init "$own/init"
  cp -r tests/kernel/guest/*.sh tests/kernel/scenarios "$own/tests/"
  cp tests/kernel/guest/multipath.conf "$own/etc/"
  for program in "$tools"/linux/tavrenix{,-monitor,-maintain} "$tools/examples/tavrenix-watch"; do
    [[ -x $program ]] || { echo "tests/kernel/boot-scenarios: no $program; ./run test-kernel builds it" >&2; exit 2; }
    cp "$program" "$own/usr/bin/"
    { ldd "$program" 2>/dev/null || true; } | awk '$3 ~ /^\// { print $3 }' | while read -r library; do
      [[ -e $work/root/usr/lib/x86_64-linux-gnu/${library##*/} ]] || cp -L "$library" "$own/usr/lib/x86_64-linux-gnu/"
    done
  done
}
