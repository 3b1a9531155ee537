A monitoring plugin: one line, performance data, and the status 0, 1, 2 or 3.

  $ . "$TESTDIR/setup.sh"
  $ check() { monitor "$samples/degraded.json" check "$@"; }
  $ check -i finance
  TAVRENIX OK - 1 units, 2 of 2 paths usable | units=1;;;0 units_faulty=0;;;0;1 paths=2;;;0 paths_usable=2;;;0;2 unit_paths_usable_min=2;;;0
  $ check --ignore 'fin*' --paths 4
  TAVRENIX WARNING - archive: 2 of 2 paths usable, 4 expected | units=1;;;0 units_faulty=1;;;0;1 paths=2;;;0 paths_usable=2;;;0;2 unit_paths_usable_min=2;;;0
  [1]
  $ check --ignore finance --warning 4: --critical 2:
  TAVRENIX WARNING - archive: 2 usable paths alert by 4: | units=1;;;0 units_faulty=1;;;0;1 paths=2;;;0 paths_usable=2;;;0;2 unit_paths_usable_min=2;4:;2:;0
  [1]
  $ for range in 1 2 0:2 3: '~:1' @1:2 @3:9 1.5:; do check -i finance -c $range >/dev/null; echo "$range $?"; done
  1 2
  2 0
  0:2 0
  3: 2
  ~:1 2
  @1:2 2
  @3:9 0
  1.5: 0

Other programs of its field take it as it is: one that turns the status round, and one that reads the figures:

  $ /usr/lib/nagios/plugins/negate -s -w OK "$(command -v tavrenix-lab-monitor)" "$samples/degraded.json" check | cut -c 1-21
  TAVRENIX OK - finance
  $ check -w 4: -c 2: | perl -MMonitoring::Plugin::Performance -e '<> =~ /\| (.*)/;
  >   print join(" ", $_->label, $_->value, $_->warning, $_->critical, $_->min, $_->max), "\n"
  >     for Monitoring::Plugin::Performance->parse_perfstring($1)'
  units 2   0 
  units_faulty 2   0 2
  paths 6   0 
  paths_usable 4   0 6
  unit_paths_usable_min 2 4: 2: 0 

No usable path is critical, and stands first. Text cannot end the line or forge performance data:

  $ with 'for i in (201, 202): entries[i]["statistics"]["state"] = 3' 'entries[200]["properties"]["Logical Unit Alias"] = "a|b=1\n<i>"'
  $ monitor try.json check | cut -c 1-90
  TAVRENIX CRITICAL - a\x7Cb=1\x0A\x3Ci\x3E: 0 of 2 paths usable, requests fail; sdf: the ar
  $ monitor try.json check | wc -l
  1

What cannot be judged is unknown:

  $ for words in '--warning nan:' '--paths 0' --colour '--ignore *-*'; do check $words; [ $? = 3 ] || echo "another status"; done
  TAVRENIX UNKNOWN - --warning must be a range such as 4: or 2:8 or @0:1, not nan:
  TAVRENIX UNKNOWN - --paths must be a number from 1 to 10000, not 0
  TAVRENIX UNKNOWN - the option --colour is unknown or not used rightly; see --help
  TAVRENIX UNKNOWN - there is no unit to check
  $ with 'image["generation"] = 0' && monitor try.json check
  TAVRENIX UNKNOWN - the multipath driver is not present
  [3]
  $ with 'image["effectiveUser"] = 1' && monitor try.json check
  TAVRENIX UNKNOWN - only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root
  [3]
