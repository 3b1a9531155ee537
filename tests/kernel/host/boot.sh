# shellcheck shell=bash
# shellcheck disable=SC2154 # work, tools and boots come from run
# One boot for each scenario, and the table of what they found.

boot_limit=600 # seconds that one boot may take under emulation on a busy machine

# The guest's first serial port carries what it says, the second its checks, the third a tar of files to keep.
# Emulation only: a nested /dev/kvm is not to be trusted, and the tests must run where there is none.
boot() {
  local name=$1 out=$work/results/$1 started=$SECONDS
  timeout --kill-after=5 "$boot_limit" qemu-system-x86_64 -accel tcg -m 2048 -smp 1 -display none -nodefaults -no-reboot \
    -kernel "$work/vmlinuz" -initrd "$work/initramfs" \
    -append "console=ttyS0 quiet loglevel=4 panic=-1 scenario=$name" \
    -serial "file:$out.console" -serial "file:$out.checks" -serial "file:$out.tar.gz" \
    >"$out.qemu" 2>&1 </dev/null || echo "emulator ended with status $?" >>"$out.qemu"
  echo $((SECONDS - started)) >"$out.seconds"
}

# Those that take longest begin, so that none of them is left to run alone at the end.
longest_first() {
  printf '%s\n' "$@" | grep -xE 'scale|algorithms|watch' || true
  printf '%s\n' "$@" | grep -vxE 'scale|algorithms|watch' || true
}

boot_all() {
  local name
  for name in $(longest_first "$@"); do
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

# finish NAME: one scenario's lines in NAME.text. A boot that did not reach its end, or checked nothing, is one failure.
finish() {
  local out=$work/results/$1
  tr -d '\r' <"$out.checks" >"$out.text"
  if ! grep -qx end "$out.text"; then
    echo "not ok $1: the guest did not reach the end of its scenario; see $out.console" >>"$out.text"
  elif ! grep -qE '^(ok|not ok) ' "$out.text"; then
    echo "not ok $1: it made no check" >>"$out.text"
  fi
  sed -i '/^end$/d' "$out.text"
}

# Prints a row for each scenario with what failed in it below, then one line of totals.
report() {
  local name text passed failed all_passed=0 all_failed=0
  printf '%-16s %8s %8s %8s\n' scenario passed failed seconds
  for name in "$@"; do
    finish "$name"
    text=$work/results/$name.text
    passed=$(grep -c '^ok ' "$text" || true)
    failed=$(grep -c '^not ok ' "$text" || true)
    printf '%-16s %8d %8d %8d\n' "$name" "$passed" "$failed" "$(<"$work/results/$name.seconds")"
    grep -E "$shown" "$text" || true
    all_passed=$((all_passed + passed))
    all_failed=$((all_failed + failed))
  done
  echo "$all_passed passed, $all_failed failed"
  ((all_failed == 0 && all_passed > 0))
}
