What the machine should have, recorded and compared.

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

A path that stands by is not expected to be usable, one that has failed is:

  $ with 'entries[103]["statistics"]["state"] = 2' && monitor try.json baseline record other.json
  recorded 2 units in other.json
  $ grep -A 1 finance other.json | tail -n 1; monitor try.json metrics -b other.json | grep '^tavrenix_\(missing\|unit_paths_expected\)'
        "usable_paths": 3,
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABB"} 3
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABC"} 2
  tavrenix_missing{kind="unit"} 0
  tavrenix_missing{kind="path"} 0

Hosts that are numbered anew bring no difference: a path is known by its ports.

  $ with 'entries[201]["properties"]["Logical Unit Path Identifier"] = {"$data": "007F00F0000F0002"}'
  $ monitor try.json baseline diff base.json

A path less, a unit less and a unit more:

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

A file that is no baseline, is gone, or cannot be written:

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
  $ with 'image["effectiveUser"] = 1' && monitor try.json baseline record base.json
  tavrenix-lab-monitor: only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root
  [2]
