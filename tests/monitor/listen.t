`metrics --listen` serves metrics over HTTP, and counts arrivals, departures and changes since its start.

  $ . "$TESTDIR/setup.sh"
  $ with && cp try.json served.json
  $ tavrenix-lab-monitor served.json metrics --listen 0 >url 2>log & server=$!
  $ until grep -qs metrics url; do sleep 0.05; done
  $ url=$(sed 's|/metrics||' url); echo "$url" | sed 's/[0-9]*$/PORT/'
  http://127.0.0.1:PORT
  $ get() { python3 - "$url$1" "${2:-GET}" <<'END'
  > import sys, urllib.error, urllib.request
  > try:
  >     with urllib.request.urlopen(urllib.request.Request(sys.argv[1], method=sys.argv[2])) as answer:
  >         sys.stdout.write(answer.read().decode())
  > except urllib.error.HTTPError as error:
  >     print(error.code, error.read().decode().strip())
  > END
  > }
  $ get /metrics >first && promtool check metrics <first && grep '_total{kind' first
  tavrenix_arrivals_total{kind="unit"} 0
  tavrenix_arrivals_total{kind="path"} 0
  tavrenix_departures_total{kind="unit"} 0
  tavrenix_departures_total{kind="path"} 0
  $ get / | grep -c '<a'; get /picture | grep -c 'g class="box"'; get /picture.svg | tail -n 1
  5
  2
  </svg>
  $ get /json | head -n 1; get /healthz; get /other; get /metrics POST
  {
  ok
  404 not found
  405 GET only

A path fails, and a unit departs with its two paths. The image is replaced as editors do it:

  $ with 'entries[101]["statistics"]["state"] = 128' 'image["generation"] = 8' \
  >   'image["entries"] = [one for one in image["entries"] if one["id"] < 200]' && mv try.json served.json
  $ until get /metrics >second; grep -q 'departures_total{kind="unit"} 1' second; do sleep 0.05; done
  $ until get /metrics >second; grep -q 'changes_total.*0F0000F0001"} 1' second; do sleep 0.05; done
  $ grep '_total{kind\|changes_total{\|last_change.*{' second | sed 's/unit="[^"]*",//;s/ [0-9]\{9,\}$/ TIME/'
  tavrenix_arrivals_total{kind="unit"} 0
  tavrenix_arrivals_total{kind="path"} 0
  tavrenix_departures_total{kind="unit"} 1
  tavrenix_departures_total{kind="path"} 2
  tavrenix_path_changes_total{path="003F00F0000F0001"} 1
  tavrenix_path_changes_total{path="003F00F0001F0001"} 0
  tavrenix_path_changes_total{path="004F00F0000F0001"} 0
  tavrenix_path_changes_total{path="004F00F0001F0001"} 0
  tavrenix_path_last_change_timestamp_seconds{path="003F00F0000F0001"} TIME

If the server loses its rights, its next answer says so:

  $ with 'image["effectiveUser"] = 1' 'image["generation"] = 9' && mv try.json served.json
  $ until get /metrics >third; grep -q 'success 0' third; do sleep 0.05; done; promtool check metrics <third
  $ get /healthz
  500 only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root

A message says why the server cannot listen on an address. SIGTERM ends it with status 0:

  $ with && monitor try.json metrics --listen ${url##*:} 2>&1 | sed 's/: [0-9]*:/: PORT:/'
  tavrenix-lab-monitor: PORT: cannot be listened on: Address already in use
  $ monitor try.json metrics --listen localhost:0
  tavrenix-lab-monitor: localhost:0: cannot be listened on: it must be an address of IPv4, or one of IPv6 in brackets
  [2]
  $ monitor try.json metrics --listen 127.0.0.1:65536
  tavrenix-lab-monitor: 127.0.0.1:65536: cannot be listened on: it must end in a port from 0 to 65535
  [2]
  $ kill -TERM $server; wait $server; cat log
