# shellcheck shell=busybox
# How a scenario states what it expects. Every check prints one line, "ok NAME" or "not ok NAME: ...", to descriptor 3.

ok() { echo "ok $1" >&3; }

not_ok() { echo "not ok $1: $(echo "$2" | tr '\n' '|')" >&3; }

# say TEXT...: told beside the checks, neither passed nor failed.
say() { echo "  $*" >&3; }

# same NAME EXPECTED ACTUAL
same() {
  if [ "$2" = "$3" ]; then ok "$1"; else not_ok "$1" "expected [$2], came [$3]"; fi
}

# differ NAME UNWANTED ACTUAL
differ() {
  if [ "$2" != "$3" ]; then ok "$1"; else not_ok "$1" "came [$3], which it was not to be"; fi
}

# has NAME PATTERN TEXT: some line of the text matches the extended pattern.
has() {
  if echo "$3" | grep -qE -- "$2"; then ok "$1"; else not_ok "$1" "expected a line like [$2], came [$3]"; fi
}

# at_most NAME LIMIT NUMBER
at_most() {
  if [ "$3" -le "$2" ]; then ok "$1 ($3, at most $2)"; else not_ok "$1" "expected at most $2, came $3"; fi
}

# agree NAME EXPECTED-FILE ACTUAL-FILE: one check for each line that either file has; both are sorted first.
# A line is a fact about one unit or one path. No line at all is a failure, not agreement.
agree() {
  if [ ! -s "$2" ]; then
    not_ok "$1" "nothing to compare with"
    return
  fi
  sort "$2" >/tmp/agree.expected
  sort "$3" >/tmp/agree.actual
  awk -v name="$1" '
    NR == FNR { expected[$0]++; order[++n] = $0; next }
    expected[$0] > 0 { expected[$0]--; print "ok " name ": " $0; next }
    { print "not ok " name ": came, but not expected: " $0 }
    END { for (i = 1; i <= n; i++) if (expected[order[i]]-- > 0) print "not ok " name ": expected, but did not come: " order[i] }
  ' /tmp/agree.expected /tmp/agree.actual >&3
}

# until_true SECONDS COMMAND...: tries ten times a second; its status is that of the last try.
until_true() {
  local tries=$(($1 * 10))
  shift
  while [ "$tries" -gt 0 ]; do
    "$@" >/dev/null 2>&1 && return 0
    sleep 0.1
    tries=$((tries - 1))
  done
  "$@" >/dev/null 2>&1
}
