promtool finds no fault in the metrics of any sample.

  $ . "$TESTDIR/setup.sh"
  $ for image in small degraded oddities; do
  >   monitor "$samples/$image.json" metrics 2>/dev/null >$image.prom && promtool check metrics <$image.prom
  > done

These are all metrics of a unit, of a path and of the host. Counters are exact:

  $ grep -h 'unit="600A0B8000112233445566778899AABB"' degraded.prom | grep -v 'path='
  tavrenix_unit_info{unit="600A0B8000112233445566778899AABB",alias="finance",device="dm-3",wwid="3600a0b8000112233445566778899aabb",vendor="EXAMPLE",product="Array 2",algorithm="least_bytes",selector="service-time"} 1
  tavrenix_unit_paths{unit="600A0B8000112233445566778899AABB"} 4
  tavrenix_unit_paths_usable{unit="600A0B8000112233445566778899AABB"} 2
  tavrenix_unit_size_bytes{unit="600A0B8000112233445566778899AABB"} 750000000000
  tavrenix_unit_queueing{unit="600A0B8000112233445566778899AABB"} 1
  tavrenix_unit_suspended{unit="600A0B8000112233445566778899AABB"} 0
  tavrenix_unit_commands_total{unit="600A0B8000112233445566778899AABB"} 4609
  tavrenix_unit_bytes_total{unit="600A0B8000112233445566778899AABB",direction="read"} 16781312
  tavrenix_unit_bytes_total{unit="600A0B8000112233445566778899AABB",direction="written"} 18446744073709551615
  $ grep 'path="004F00F0000F0001"' degraded.prom | grep -v 'standby\|unavailable' | sed 's/{unit="[0-9A-F]*",path="004F00F0000F0001"/{/'
  tavrenix_path_info{,interconnect="Fibre Channel Interface",device="sdc",host_port="2100001b32000002",target_port="50060e8000000011",group="1"} 1
  tavrenix_path_state{,state="active_optimized"} 1
  tavrenix_path_state{,state="active_nonoptimized"} 0
  tavrenix_path_enabled{} 0
  tavrenix_path_usable{} 0
  tavrenix_path_commands_total{} 2304
  tavrenix_path_failures_total{} 3
  tavrenix_path_errors_total{} 17
  tavrenix_path_timeouts_total{} 5
  tavrenix_path_bytes_total{,direction="read"} 8388608
  tavrenix_path_bytes_total{,direction="written"} 18446744073709551615
  $ grep -v 'unit=\|^#' degraded.prom | sed 's/seconds .*/seconds/;s/version=".*"/VERSION/'
  tavrenix_driver_present 1
  tavrenix_generation_info{generation="7"} 1
  tavrenix_collector_success 1
  tavrenix_collector_duration_seconds
  tavrenix_build_info{VERSION} 1

Two units with the same identifier have labels of their own, and so have two paths:

  $ grep -o 'unit_paths{.*' oddities.prom | grep 0000009
  unit_paths{unit="600A0B80001122334455667700000009"} 1
  unit_paths{unit="600A0B80001122334455667700000009#2"} 1
  $ grep -o 'path_enabled{.*' oddities.prom | grep 1405
  path_enabled{unit="600A0B80001122334455667700000004",path="1405"} 0
  path_enabled{unit="600A0B80001122334455667700000004",path="1405#2"} 1

--paths adds the expected number. --textfile replaces its file whole:

  $ with && monitor try.json metrics --textfile out.prom --paths 4 && stat -c %a out.prom && grep ^tavrenix_unit_paths_expected out.prom
  644
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABB"} 4
  tavrenix_unit_paths_expected{unit="600A0B8000112233445566778899AABC"} 4
  $ with 'image["generation"] = 0' && monitor try.json metrics | grep present
  # HELP tavrenix_driver_present 1 if the multipath driver is present.
  # TYPE tavrenix_driver_present gauge
  tavrenix_driver_present 0

--metrics selects fewer metrics, and refuses an unknown set:

  $ for set in all states units paths; do monitor "$samples/degraded.json" metrics -m $set | grep -vc '^#'; done
  101
  59
  23
  tavrenix-lab-monitor: --metrics takes all, states or units, not 'paths'
  0
  [1]
