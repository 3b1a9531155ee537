plan: what would be taken out, unit by unit, and what is refused.

  $ . "$TESTDIR/../monitor/setup.sh"
  $ maintain() { tavrenix-lab-maintain try.json "$@"; }
  $ with "$well" && cp try.json well.json
  $ maintain plan --host 4 --accept dm-4
  UNIT     USABLE  OPTIMIZED  NON-OPTIMIZED  STANDBY  LOSS OF LAST
  finance  4 -> 2  3 -> 2     1 -> 0         0 -> 0
  archive  2 -> 1  2 -> 1     0 -> 0         0 -> 0   accepted
  
  UNIT     DEVICE  PLAN      STATE BEFORE         HOST PORT         TARGET PORT       ADDRESS  PATH
  finance  sdb     stays     active_optimized     2100001b32000001  50060e8000000010  3:0:0:1  003F00F0000F0001
  finance  sde     stays     active_optimized     2100001b32000001  50060e8000000013  3:0:1:1  003F00F0001F0001
  finance  sdc     take out  active_optimized     2100001b32000002  50060e8000000011  4:0:0:1  004F00F0000F0001
  finance  sdd     take out  active_nonoptimized  2100001b32000002  50060e8000000012  4:0:1:1  004F00F0001F0001
  archive  sdf     stays     active_optimized     2100001b32000001  50060e8000000010  3:0:0:2  003F00F0000F0002
  archive  sdg     take out  active_optimized     2100001b32000002  50060e8000000011  4:0:0:2  004F00F0000F0002
  
  Nothing was changed.
  $ cmp try.json well.json

Paths by each option, united; units restrict:

  $ taken() { maintain plan "$@" | sed -n 's/^[a-z]* *\(sd.\) *take out .*/\1/p' | paste -sd ' '; }
  $ taken --host-port 2100001B32000002 --path 3:0:1:1
  sde sdc sdd sdg
  $ taken --target-port 50060e8000000010 --target-port 50060e8000000012
  sdb sdd sdf
  $ taken --path /dev/sdb --path 003f00f0000f0002
  sdb sdf
  $ taken --host 4 --unit FINANCE
  sdc sdd
  $ taken --unit archive --accept archive
  sdf sdg

What is refused, with status 2:

  $ refused() { maintain plan "$@" 2>&1 | grep -v '^[A-Z]\|^$\|  '; }
  $ refused --unit archive
  refused: archive would lose its last usable path; --accept archive allows it
  $ maintain plan --path sdb --path sdc --path sde | grep refused
  refused: finance would lose its last optimized path; --accept finance allows it
  $ maintain plan --path sdb --path sdc --path sde >/dev/null
  [2]
  $ refused --host 4 --accept elsewhere
  tavrenix-lab-maintain: no unit of this plan is called elsewhere
  $ refused --path sdb --unit archive
  tavrenix-lab-maintain: no path of these units matches the other options
  $ refused --path sdz
  tavrenix-lab-maintain: no path matches --path sdz
  $ refused --host-port $'x\e[31m'
  tavrenix-lab-maintain: no path matches --host-port x\x1B[31m; there are 2100001b32000001, 2100001b32000002
  $ refused --host x
  tavrenix-lab-maintain: --host must be a number from 0 to 4294967295, not x
  $ refused
  tavrenix-lab-maintain: say what: --host-port, --target-port, --host, --path or --unit; see --help
  $ with && refused --path sdc
  refused: every selected path is out of use already: there is nothing to take out
  $ with "$well" 'entries[103]["properties"]["Logical Unit Path Identifier"] = entries[101]["properties"]["Logical Unit Path Identifier"]' && refused --path sdb
  refused: finance: path sdb shares its identifier with another path
  $ with "$well" 'image["effectiveUser"] = 1' && refused --path sdb
  tavrenix-lab-maintain: only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root

For programs:

  $ cp well.json try.json && maintain plan --unit archive --json | python3 -c '
  > import json, sys
  > plan = json.load(sys.stdin)
  > unit = plan["units"][0]
  > print(plan["version"]["major"], plan["state"], plan["selection"], plan["refusals"])
  > print(unit["title"], unit["usable_before"], unit["usable_after"], unit["states"]["active_optimized"], unit["paths"][0]["step"])'
  1 planned ['--unit archive'] ['archive would lose its last usable path; --accept archive allows it']
  archive 2 0 {'before': 2, 'after': 0} planned
