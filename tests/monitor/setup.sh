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
# For `with`: no path is out of use. Then the devices of those in try.json that are.
well='for i in (102, 104): entries[i]["statistics"]["state"] = 0; entries[i]["details"].update(
  driverState="active", deviceState="running", accessState="active/optimized")'
out() {
  monitor try.json json --paths | python3 -c 'import json, sys
print(*[path["device"] for path in json.load(sys.stdin)["paths"] if not path["enabled"]])'
}
