# shellcheck shell=bash
# shellcheck disable=SC2154 # work, tools and boots come from run
# One boot for each scenario, and the table of what they found.

boot_limit=120 # seconds that one boot may take under emulation on a busy machine

# The guest's first serial port carries what it says, the second its checks, the third a tar of files to keep.
# Emulation only: a nested /dev/kvm is not to be trusted, and the tests must run where there is none.
boot() {
  local name=$1 out=$work/results/$1 started=$SECONDS
  timeout --kill-after=5 "$boot_limit" qemu-system-x86_64 -accel tcg -m 1024 -smp 1 -display none -nodefaults -no-reboot \
    -kernel "$work/vmlinuz" -initrd "$work/initramfs" \
    -append "console=ttyS0 quiet loglevel=4 panic=-1 scenario=$name" \
    -serial "file:$out.console" -serial "file:$out.checks" -serial "file:$out.tar.gz" \
    >"$out.qemu" 2>&1 </dev/null || echo "emulator ended with status $?" >>"$out.qemu"
  echo $((SECONDS - started)) >"$out.seconds"
}

boot_all() {
  local name
  for name in "$@"; do
    while (($(jobs -pr | wc -l) >= boots)); do
      wait -n || true
    done
    boot "$name" &
  done
  wait
}

keep_files() {
  local to=$1 name
  for name in "${@:2}"; do
    [[ -s $work/results/$name.tar.gz ]] || continue
    mkdir -p "$to/$name"
    tar -C "$to/$name" -xzf "$work/results/$name.tar.gz"
  done
}

# Prints every check, then one line of totals. A boot that did not reach its end, or checked nothing, is one failure.
report() {
  local name status=0
  for name in "$@"; do
    printf '== %s (%s s)\n' "$name" "$(<"$work/results/$name.seconds")"
    tr -d '\r' <"$work/results/$name.checks" | tee "$work/results/$name.text"
    if ! grep -qx 'end' "$work/results/$name.text"; then
      echo "not ok $name: the guest did not reach the end of its scenario" | tee -a "$work/results/$name.text"
      tail -n 30 "$work/results/$name.console" "$work/results/$name.qemu" | tr -d '\r'
    elif ! grep -q '^\(ok\|not ok\) ' "$work/results/$name.text"; then
      echo "not ok $name: it made no check" | tee -a "$work/results/$name.text"
    fi
  done
  local -a texts=("${@/%/.text}")
  awk '/^ok / { passed++ } /^not ok / { failed++ } END { print passed + 0 " passed, " failed + 0 " failed"; exit failed > 0 || !passed }' \
    "${texts[@]/#/$work/results/}" || status=1
  return "$status"
}
