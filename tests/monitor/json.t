Every document of `json` is valid under the installed schema: the whole one, lists of units or paths, and lines.

  $ . "$TESTDIR/setup.sh"
  $ valid() { python3 -c '
  > import json, jsonschema, os, sys
  > schema = json.load(open(os.environ["SCHEMA"]))
  > for text in sys.stdin.read().strip().split("\n\n"):
  >     jsonschema.Draft202012Validator(schema).validate(json.loads(text))
  > print("valid")'; }
  $ for image in small degraded oddities; do monitor "$samples/$image.json" json 2>/dev/null; echo; done | valid
  valid
  $ for part in units paths; do monitor "$samples/degraded.json" json --$part; echo; done | valid
  valid
  $ (timeout 1.5 tavrenix-lab-monitor "$samples/degraded.json" json --watch 1 || true) | head -n 1 | valid
  valid

The document shows every fact of the image. Counters of 64 bits are exact:

  $ monitor "$samples/degraded.json" json | sed 's/"time_unix_ms": [0-9]*/TIME/' | python3 -c '
  > import re, sys
  > text = sys.stdin.read()
  > unit = text[text.index("\"identifier\": \"600A0B8000112233445566778899AABB\""):text.index("\"alias\": \"archive\"")]
  > print(re.sub(r"\s+", " ", text[:text.index("\"units\"")]))
  > print(re.sub(r"\s+", " ", unit[:unit.index("\"paths\"")]))
  > at = unit.index("004F00F0000F0001")
  > print(re.sub(r"\s+", " ", unit[at:unit.index("}", at)]))'
  { "version": { "major": 1, "minor": 1 }, TIME, "host": { "backing": "simulation", "driver_present": true, "kernel_release": "6.1.0-18-amd64", "generation": 7 }, 
  "identifier": "600A0B8000112233445566778899AABB", "alias": "finance", "vendor": "EXAMPLE", "product": "Array 2", "device": "dm-3", "map_name": "finance", "wwid": "3600a0b8000112233445566778899aabb", "size_bytes": 750000000000, "algorithm": "least_bytes", "selector": "service-time", "hardware_handler": "alua", "queueing": true, "suspended": false, "open_count": 1, "group_states": [ "active", "enabled" ], "paths_total": 4, "paths_usable": 2, "counters": { "bytes_sent": 18446744073709551615, "bytes_received": 16781312, "commands": 4609 }, "volumes": [ { "name": "Ledger", "device": "dm-3", "size_bytes": 750000000000 } ], 
  004F00F0000F0001", "state": "active_optimized", "enabled": false, "usable": false, "interconnect": "Fibre Channel Interface", "host_port": "2100001b32000002", "target_port": "50060e8000000011", "device": "sdc", "device_number": "8:32", "address": "4:0:0:1", "group": 1, "driver_state": "failed", "device_state": "running", "access_state": "active/optimized", "failures": 3, "errors": 17, "timeouts": 5, "counters": { "bytes_sent": 18446744073709551615, "bytes_received": 8388608, "commands": 2304 

Without a driver or without units, there is still a document:

  $ answer() { monitor try.json json | python3 -c 'import json, sys; d = json.load(sys.stdin); print(d["host"]["driver_present"], len(d["units"]))'; }
  $ with 'image["generation"] = 0' && answer
  False 0
  $ with 'image["entries"] = []' && answer
  True 0
  $ monitor "$samples/degraded.json" json >/dev/full
  tavrenix-lab-monitor: standard output: cannot be written: No space left on device
  [2]
