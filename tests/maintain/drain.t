drain, status, undo and restore, with the journal on disk.

  $ . "$TESTDIR/../monitor/setup.sh"
  $ maintain() { tavrenix-lab-maintain try.json "$@" | sed 's/20..-..-..T..:..:..Z/TIME/g'; return "${PIPESTATUS[0]}"; }
  $ with "$well" && cp try.json well.json
  $ export SUDO_USER=eve
  $ maintain drain --host 4 --dry-run | tail -n 1 && cmp try.json well.json && ls try.json.*
  Nothing was changed.
  ls: cannot access 'try.json.*': No such file or directory
  [2]
  $ maintain drain --host 4 --reason $'new\tc\xe4ble' | sed '/^host /d'
  1/3  finance: path sdc is out
  2/3  finance: path sdd is out
  3/3  archive: path sdg is out
  
  Maintenance of paths
  result     drained, 3 paths out
  by         eve
  begun      TIME
  ended      TIME
  selection  --host 4
  reason     new\x09c\xE4ble
  
  UNIT     USABLE  OPTIMIZED  NON-OPTIMIZED  STANDBY
  finance  4 -> 2  3 -> 2     1 -> 0         0 -> 0
  archive  2 -> 1  2 -> 1     0 -> 0         0 -> 0
  
  UNIT     DEVICE  STEP      STATE BEFORE         HOST PORT         TARGET PORT       ADDRESS  PATH
  finance  sdb     stays     active_optimized     2100001b32000001  50060e8000000010  3:0:0:1  003F00F0000F0001
  finance  sde     stays     active_optimized     2100001b32000001  50060e8000000013  3:0:1:1  003F00F0001F0001
  finance  sdc     disabled  active_optimized     2100001b32000002  50060e8000000011  4:0:0:1  004F00F0000F0001
  finance  sdd     disabled  active_nonoptimized  2100001b32000002  50060e8000000012  4:0:1:1  004F00F0001F0001
  archive  sdf     stays     active_optimized     2100001b32000001  50060e8000000010  3:0:0:2  003F00F0000F0002
  archive  sdg     disabled  active_optimized     2100001b32000002  50060e8000000011  4:0:0:2  004F00F0000F0002
  $ out && stat -c %a try.json.maintenance.json
  sdc sdd sdg
  600

While it is open, and when something changes behind it:

  $ maintain drain --path sdb
  tavrenix-lab-maintain: a maintenance is open since 20*Z by eve: restore, resume or undo it first (glob)
  [2]
  $ maintain drain --resume --reason x || maintain undo --journal '' || maintain drain --resume
  tavrenix-lab-maintain: --resume takes selection, units and reason from the journal, so name none
  tavrenix-lab-maintain: --journal needs the name of a file
  tavrenix-lab-maintain: the drain is complete: restore or undo it
  [2]
  $ maintain status | head -n 2
  A maintenance is open.
  
  $ change() { python3 - "$@" <<'END'
  > import json, sys
  > image = json.load(open("try.json"))
  > entries = {entry["id"]: entry for entry in image["entries"]}
  > for statement in sys.argv[1:]: exec(statement)
  > image["generation"] += 1
  > json.dump(image, open("try.json", "w"))
  > END
  > }
  $ change 'entries[202]["statistics"]["state"] = 0' 'entries[101]["statistics"]["state"] = 1' 'entries[100]["parents"].remove(103)' \
  >   'entries[201]["details"]["driverState"] = "failed"' 'entries[202]["details"]["driverState"] = "failed"'
  $ maintain status | grep changed
  changed: finance: path sdb is active_nonoptimized now, and was active_optimized
  changed: finance: path sdd is gone
  changed: archive: path sdf is out of use now, and was active_optimized
  changed: archive: no usable path is left
  $ change 'entries[200]["details"]["wwid"] = "3\033"' && cp try.json changed.json
  $ maintain undo --dry-run && cmp try.json changed.json
  finance: path sdc would be brought back
  finance: path sdd is gone
  archive: path sdg is gone
  Nothing was changed.
  $ maintain restore --wait 0 | sed '4,$d'
  archive: path sdg is gone and cannot be brought back
  finance: path sdd is gone and cannot be brought back
  finance: path sdc is back
  $ maintain restore --wait 0 >/dev/null
  [1]
  $ maintain undo | grep 'result\|surprise' | sort | uniq -c
        1 result     undone, 1 path back
        1 surprise   archive: path sdg is gone and cannot be brought back
        1 surprise   finance: path sdd is gone and cannot be brought back

The next one keeps the record of the last, and ends well:

  $ cp well.json try.json && maintain drain --path sdb --unit finance --accept finance --json 2>log | grep state\":
    "state": "drained",
  $ cat log; grep -h state\": try.json.maintenance.json.1
  1/1  finance: path sdb is out
    "state": "undone",
  $ maintain restore --wait 0 | sed -n '/^$/,$!p'; out
  finance: path sdb is back
  finance: no I/O to be seen
  
  $ maintain status | sed 4q
  No maintenance is open.
  The last one:
  
  Maintenance of paths
  $ maintain undo || maintain restore || maintain drain --resume
  tavrenix-lab-maintain: no maintenance is open
  tavrenix-lab-maintain: no maintenance is open
  tavrenix-lab-maintain: there is no drain to resume
  [2]

A surprise is put back, with status 1:

  $ with "$well" 'entries[103]["details"]["inFlight"] = 3' && cp try.json busy.json && maintain drain --host 4 --wait 0 | sed '/^$/,$d'
  1/3  finance: path sdc is out
  finance: path sdd: 3 requests still under way after the wait: what was taken out is brought back
  finance: path sdd is back
  finance: path sdc is back
  $ out; maintain drain --host 4 --wait 0 >/dev/null
  
  [1]
  $ with "$well" 'image["writeStatuses"] = [0, -5]' && maintain drain --host 4 | sed -n 2p; out
  the driver refuses to disable sdd: Unable to set property (error 0x08000003, result -5): what was taken out is brought back
  

A result that cannot be printed is no refusal, and a journal that cannot be written keeps no path out:

  $ with "$well" && tavrenix-lab-maintain try.json drain --path sdb >/dev/full; echo "$? $(out)"
  the result is in the journal alone: standard output: cannot be written: No space left on device
  1 sdb
  $ long=$(printf %0249d 0) && cp try.json.maintenance.json $long && maintain undo --journal $long | cut -c 247- | head -n 1; out
  000: cannot be written beside: File name too long
  

Journals that are no good are named and left as they are:

  $ for text in '' '[]' '{"kind": "baseline"}' '{"kind": "tavrenix maintenance", "version": {"major": 2}}' "$(head -c 900 try.json.maintenance.json)"; do
  >   echo "$text" >bad.json && cp bad.json kept.json
  >   for verb in "drain --path sdb" status undo restore; do maintain $verb --journal bad.json && echo done; done 2>&1 | cut -c 1-75 | uniq
  >   cmp bad.json kept.json
  > done
  tavrenix-lab-maintain: bad.json: not a journal of a maintenance: [json.exce
  tavrenix-lab-maintain: bad.json: not a journal of a maintenance: another pr
  tavrenix-lab-maintain: bad.json: not a journal of a maintenance: another pr
  tavrenix-lab-maintain: bad.json: not a journal of a maintenance: its versio
  tavrenix-lab-maintain: bad.json: not a journal of a maintenance: [json.exce
  $ maintain drain --path sdb --journal /nowhere/else/journal.json
  tavrenix-lab-maintain: /nowhere/else/journal.json.lock: cannot be opened: No such file or directory
  [2]
