`baseline record` notes which units and paths the machine should have. `diff`, `status` and `check` compare with it.

  $ . "$TESTDIR/setup.sh"
  $ with && monitor try.json baseline record base.json
  recorded 2 units in base.json
  $ stat -c %a base.json; ls
  644
  base.json
  try.json
  $ monitor try.json baseline show base.json
  finance (600A0B8000112233445566778899AABB): 4 paths
  archive (600A0B8000112233445566778899AABC): 2 paths
  $ monitor try.json baseline diff base.json

A baseline does not expect a path on standby to be usable. It does expect that of a path that has failed:

  $ with 'entries[103]["statistics"]["state"] = 2' && monitor try.json baseline record other.json
  recorded 2 units in other.json
  $ grep -A 1 finance other.json | tail -n 1; monitor try.json metrics -b other.json | grep '^tavrenix_\(missing\|unit_paths_expected\)'
        "usable_paths": 3,
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABB"} 3
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABC"} 2
  tavrenix_missing{kind="unit"} 0
  tavrenix_missing{kind="path"} 0

A path is recognised by its ports, so new host numbers after a reboot are no difference:

  $ with 'entries[201]["properties"]["Logical Unit Path Identifier"] = {"$data": "007F00F0000F0002"}'
  $ monitor try.json baseline diff base.json

Every command names a path that is missing, a unit that is missing and a unit that is new:

  $ with 'entries[100]["parents"].remove(104)' 'entries[200]["properties"]["Logical Unit Unique Identifier"] = {"$data": "AA"}'
  $ monitor try.json baseline diff base.json
  finance: path 003F00F0001F0001 is missing
  archive is missing
  archive is new
  [1]
  $ monitor try.json status -b base.json | tail -n 3
  MISSING  finance: path 003F00F0001F0001 is missing
  MISSING  archive is missing
  NEW      archive is new
  $ monitor try.json check -b base.json | sed 's/ |.*//'
  TAVRENIX CRITICAL - archive is missing; finance: 2 of 3 paths usable, 4 expected; sdc failed by driver although the device runs and the array reports active/optimized

A message says why a baseline cannot be read or written:

  $ for text in '[]' '{"version": {"major": 2}}' '{"version": {"major": 1}, "units": [1]}' 'x'; do
  >   echo "$text" >bad.json; monitor try.json baseline diff bad.json 2>&1 | cut -c 1-62
  > done
  tavrenix-lab-monitor: bad.json: not a baseline: [json.exceptio
  tavrenix-lab-monitor: bad.json: not a baseline: its version is
  tavrenix-lab-monitor: bad.json: not a baseline: [json.exceptio
  tavrenix-lab-monitor: bad.json: not a baseline: [json.exceptio
  $ monitor try.json check -b none.json
  TAVRENIX UNKNOWN - none.json: cannot be opened: No such file or directory
  [3]
  $ monitor try.json baseline record /nowhere/base.json
  tavrenix-lab-monitor: /nowhere/base.json: cannot be written beside: No such file or directory
  [2]
