Both programs print a help text and a version, and name a word that they do not understand.

  $ . "$TESTDIR/setup.sh"
  $ for program in tavrenix-monitor tavrenix-lab-monitor; do $program --help | head -n 1; $program --version; done
  usage: tavrenix-monitor [VERB] [OPTION]...
  tavrenix-monitor \d+\.\d+\.\d+ (re)
  usage: tavrenix-lab-monitor IMAGE [VERB] [OPTION]...
  tavrenix-lab-monitor \d+\.\d+\.\d+ (re)
  $ while read -r words; do monitor "$samples/small.json" $words ; [ $? = 2 ] || echo "another status"; done 2>&1 <<'END'
  > jsn
  > json extra
  > json --watch
  > json --watch 0
  > json --units --paths
  > baseline record
  > picture --format png
  > top --count 2
  > top --batch --sort size
  > END
  tavrenix-lab-monitor: there is no verb jsn; see --help
  tavrenix-lab-monitor: unexpected argument extra; see --help
  tavrenix-lab-monitor: the option --watch needs a value; see --help
  tavrenix-lab-monitor: --watch must be a number from 1 to 86400, not 0
  tavrenix-lab-monitor: give --units or --paths, not both
  tavrenix-lab-monitor: baseline takes record, show or diff, and a file; see --help
  tavrenix-lab-monitor: --format must be text, svg, dot or html, not png
  tavrenix-lab-monitor: --count is for --batch alone; give both
  tavrenix-lab-monitor: --sort must be name, bytes, read, written, commands, skew, changed or health, not size
  $ monitor none.json json
  tavrenix-lab-monitor: none.json: cannot be opened: No such file or directory
  [2]

No verb shows anything to an ordinary user. All say why, and the file of metrics says that collecting has failed:

  $ with 'image["effectiveUser"] = 1000'
  $ for verb in status json metrics "metrics --textfile out.prom" "baseline record out.json" check; do
  >   monitor try.json $verb 2>&1; echo "status $?"
  > done | sort | uniq -c
        1 TAVRENIX UNKNOWN - only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root
        5 status 2
        1 status 3
        5 tavrenix-lab-monitor: only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root
  $ ls out.*; grep -v '#\|build\|seconds' out.prom
  out.prom
  tavrenix_collector_success 0
