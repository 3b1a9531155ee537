`status` shows a person which units are not well, and why.

  $ . "$TESTDIR/setup.sh"
  $ monitor "$samples/degraded.json"
  2 units, 1 not well; 6 paths, 4 usable.
  WARNING  finance (dm-3): 2 of 4 paths usable; sde: the device is offline; sdc failed by driver although the device runs and the array reports active/optimized
  $ COLUMNS=50 monitor "$samples/degraded.json" status --all
  2 units, 1 not well; 6 paths, 4 usable.
  WARNING  finance (dm-3): 2 of 4 paths usable; sde:
           the device is offline; sdc failed by
           driver although the device runs and the
           array reports active/optimized
  OK       archive (dm-4): 2 paths

--unit shows one unit in full. Any of its names in any letter case selects it, and lines are cut at the width:

  $ for name in 600a0b8000112233445566778899aabc ARCHIVE dm-4 3600A0B8000112233445566778899AABC; do
  >   monitor "$samples/degraded.json" status --unit $name | head -n 1
  > done | uniq -c
        4 OK       archive (dm-4): 2 paths
  $ COLUMNS=78 monitor "$samples/degraded.json" status -u dm-4
  OK       archive (dm-4): 2 paths
  
    identifier     600A0B8000112233445566778899AABC
    WWID           3600a0b8000112233445566778899aabc
    alias          archive
    device         dm-4
    map            archive
    vendor         EXAMPLE
    product        Array 2
    size           2.0 TB
    algorithm      round_robin
    selector       round-robin
    batch count    1
    without paths  requests fail
    suspended      no
    open count     0
    read           262.1 kB
    written        131.1 kB
  
    PATH              DEVICE  STATE             USABLE  DRIVER  DISK     ARRAY .
    003F00F0000F0002  sdf     active_optimized  yes     active  running  active.
    004F00F0000F0002  sdg     active_optimized  yes     active  running  active.
  $ monitor "$samples/degraded.json" status -u nothing
  tavrenix-lab-monitor: no unit is called nothing; see status --all
  [2]

Each finding has its own text, and the worst unit comes first:

  $ finding() { with "$@" && monitor try.json | sed 1d; }
  $ finding 'for i in (101, 103): entries[i]["statistics"]["state"] = 3; entries[i]["details"]["accessState"] = "transitioning"'
  CRITICAL finance (dm-3): 0 of 4 paths usable, requests wait; sdb: the array reports transitioning; sde: the device is offline; sdc failed by driver although the device runs and the array reports active/optimized; sdd: the array reports transitioning
  $ port='entries[202]["details"]["%sPort"] = entries[201]["details"]["%sPort"]'
  $ finding "${port//%s/host}" 'entries[200]["details"]["suspended"] = True' | sed -n '/archive/p'
  WARNING  archive (dm-4): suspended: requests wait; all usable paths go through host port 2100001b32000001
  $ finding "${port//%s/target}" | sed -n '/archive/p'
  WARNING  archive (dm-4): all usable paths go to target port 50060e8000000010
  $ finding 'for i in (201, 202): entries[i]["details"]["hostPort"] = "iqn.2026-01.example:host"' | grep archive
  [1]
  $ finding 'entries[201]["statistics"]["state"] = 2' 'entries[201]["details"]["accessState"] = "standby"' | grep archive
  [1]
  $ with 'image["generation"] = 0' && monitor try.json
  The multipath driver is not present.
  $ with 'image["entries"] = []' && monitor try.json
  No multipathed units.

There are colours on a terminal only, and none if NO_COLOR is set:

  $ on_terminal() { script -qec "$1 tavrenix-lab-monitor $samples/degraded.json" /dev/null </dev/null | grep -q $'\033' && echo coloured; }
  $ TERM=xterm on_terminal env
  coloured
  $ TERM=xterm on_terminal "env NO_COLOR=1"
  [1]
