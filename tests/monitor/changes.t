`watch` prints a line for each arrival, departure and change.

  $ . "$TESTDIR/setup.sh"
  $ with && cp try.json served.json
  $ tavrenix-lab-monitor served.json watch >lines 2>log & people=$!
  $ tavrenix-lab-monitor served.json watch --json >objects 2>>log & machines=$!
  $ until [ -s lines ] && [ -s objects ]; do sleep 0.05; done
  $ show() { until [ "$(wc -l <lines)" -ge $1 ] && [ "$(wc -l <objects)" -ge $1 ]; do sleep 0.05; done; cut -c 26- lines; }
  $ with 'image["generation"] = 8' 'entries[102]["statistics"]["state"] = 0' \
  >   'entries[102]["details"].update(driverState="active", failures=4)' 'entries[100]["details"]["size"] = 1' \
  >   'entries[100]["parents"].remove(104)' 'image["entries"] = [one for one in image["entries"] if one["id"] < 200]' \
  >   'entries[101]["details"]["device"] = "sd\x1bz"' 'entries[101]["details"]["deviceState"] = "blocked"'
  $ mv try.json served.json && show 10
  2 units and 6 paths are watched
  archive: path sdf disappeared
  archive: path sdg disappeared
  archive disappeared
  finance: path sde disappeared
  finance: size_bytes 750000000000 -> 1
  finance: path sd\x1Bz: device_state running -> blocked
  finance: path sdc: enabled false -> true
  finance: path sdc: driver_state failed -> active
  finance: path sdc: failures 3 -> 4
  $ sed -n '1p;4p;8p' objects | sed 's/"time_unix_ms":[0-9]*/TIME/'
  {TIME,"event":"begin","units":2,"paths":6}
  {TIME,"event":"unit_disappeared","unit":"600A0B8000112233445566778899AABC","unit_title":"archive"}
  {TIME,"event":"path_changed","unit":"600A0B8000112233445566778899AABB","unit_title":"finance","path":"004F00F0000F0001","path_title":"sdc","fact":"enabled","before":"false","after":"true"}
  $ with 'image["generation"] = 9' 'image["entries"] = [one for one in image["entries"] if one["id"] != 100 and one["id"] != 111]'
  $ mv try.json served.json && show 17 | sed 1,10d
  finance: path sd\x1Bz disappeared
  finance: path sdc disappeared
  finance: path sdd disappeared
  finance disappeared
  archive appeared
  archive: path sdf appeared
  archive: path sdg appeared
  $ kill $people $machines; cat log
