# Sourced by each test.
samples=$TESTDIR/../../samples
export COLUMNS=0  # no width
monitor() { tavrenix-lab-monitor "$@"; }
# with PYTHON-STATEMENT...: a copy of degraded.json as try.json, changed; `entries` are by ID.
with() {
  python3 - "$samples/degraded.json" "$@" <<'END' >try.json
import json, sys
image = json.load(open(sys.argv[1]))
entries = {entry["id"]: entry for entry in image["entries"]}
for statement in sys.argv[2:]:
    exec(statement)
print(json.dumps(image))
END
}
