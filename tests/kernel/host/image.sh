# shellcheck shell=bash
# shellcheck disable=SC2154 # work, tools and boots come from run
# The guest's root: the unpacked packages without their papers, the few kernel modules needed, this project's
# programs and the scenarios. It lives in memory only, as an initramfs.

# Modules by name; what they depend on follows by itself. crc32c_generic is named because ext4 asks for it by alias.
guest_modules=(
  dm_mod dm_zero dm_multipath dm_round_robin dm_queue_length dm_service_time
  scsi_dh_alua sd_mod scsi_debug tcm_loop target_core_file loop ext4 crc32c_generic
)

make_image() {
  local root=$work/root
  if [[ ! -f $work/base.cpio || $work/packages.list -nt $work/base.cpio ||
    tests/kernel/host/image.sh -nt $work/base.cpio ]]; then
    rm -rf "$root"
    lay_out_packages "$root"
    lay_out_modules "$root"
    pack "$root" >"$work/base.cpio"
  fi
  rm -rf "$work/own"
  lay_out_own "$work/own"
  # Archives follow each other: the kernel unpacks one after another into the same root.
  { cat "$work/base.cpio" && pack "$work/own"; } >"$work/initramfs"
}

pack() {
  (cd "$1" && find . | cpio --quiet -o -H newc -R 0:0)
}

lay_out_packages() {
  local root=$1 folder from=$work/packages
  mkdir -p "$root"/{usr/lib64,dev,proc,sys,run,tmp,mnt,etc,root,var/lib}
  for folder in bin sbin lib lib64; do
    ln -s "usr/$folder" "$root/$folder"
    mkdir -p "$root/usr/$folder"
    [[ ! -d $from/usr/$folder ]] || cp -a "$from/usr/$folder/." "$root/usr/$folder/"
  done
  for folder in bin sbin lib lib64; do
    [[ ! -d $from/$folder ]] ||
      tar -C "$from/$folder" -c --exclude=./modules . | tar -C "$root/usr/$folder" -x
  done
  cp -a "$from"/etc/. "$root/etc/"
  rm -rf "$root"/usr/lib/{udev/hwdb.d,x86_64-linux-gnu/gconv,x86_64-linux-gnu/perl-base,debug,python3}
  mkdir -p "$root/usr/busybox"
  local applet
  "$root/bin/busybox" --list | while read -r applet; do
    ln -s ../bin/busybox "$root/usr/busybox/$applet"
  done
  ln -sf busybox "$root/bin/sh"
  # The kernel calls this one by its full path when it wants a module.
  ln -sf ../bin/busybox "$root/sbin/modprobe"
}

# Copies the modules and everything they depend on, read from a modules.dep made for the whole kernel package.
lay_out_modules() {
  local root=$1 version from=$work/packages module
  version=$(basename -- "$from"/lib/modules/*)
  "$from/bin/busybox" depmod -b "$from" "$version"
  local wanted=" ${guest_modules[*]} "
  awk -v wanted="$wanted" '
    { path = $1; sub(/:$/, "", path); name = path; sub(/.*\//, "", name); sub(/\.ko.*/, "", name); gsub(/-/, "_", name) }
    index(wanted, " " name " ") { print path; for (i = 2; i <= NF; i++) print $i }
  ' "$from/lib/modules/$version/modules.dep" | sort -u >"$work/modules.list"
  for module in "${guest_modules[@]}"; do
    sed 's/.*\///; s/\.ko.*//; y/-/_/' "$work/modules.list" | grep -qx "$module" ||
      echo "tests/kernel/run: this kernel has no module $module" >&2
  done
  mkdir -p "$root/lib/modules/$version"
  tar -C "$from/lib/modules/$version" -c -T "$work/modules.list" modules.builtin modules.order |
    tar -C "$root/lib/modules/$version" -x
  "$from/bin/busybox" depmod -b "$root" "$version"
  cp "$from"/boot/vmlinuz-* "$work/vmlinuz"
}

# This project's part: init, helpers, scenarios, and its programs where they are built.
lay_out_own() {
  local own=$1 program library
  mkdir -p "$own/tests" "$own/usr/bin" "$own/usr/lib/x86_64-linux-gnu" "$own/etc"
  cp tests/kernel/guest/init "$own/init"
  cp tests/kernel/guest/*.sh tests/kernel/guest/*.awk "$own/tests/"
  cp -r tests/kernel/scenarios "$own/tests/"
  cp tests/kernel/recordings/*.sh "$own/tests/scenarios/"
  cp tests/kernel/guest/{multipath.conf,passwd,lvm.conf} "$own/etc/"
  for program in "$tools/linux/tavrenix" "$tools/examples/tavrenix-watch"; do
    [[ -x $program ]] || continue
    cp "$program" "$own/usr/bin/"
    { ldd "$program" 2>/dev/null || true; } | awk '$3 ~ /^\// { print $3 }' | while read -r library; do
      [[ -e $work/root/usr/lib/x86_64-linux-gnu/${library##*/} ]] ||
        cp -L "$library" "$own/usr/lib/x86_64-linux-gnu/"
    done
  done
}
