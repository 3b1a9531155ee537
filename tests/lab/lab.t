The programs of the lab, as a person calls them.

  $ docs="$TESTDIR/../.." unit=600A0B80001122334455667700000001

All print a help text. If it cannot be written, their status is 1:

  $ tavrenix-lab --help > help; tavrenix-lab '' 2> refused || cmp help refused; tavrenix-lab --version > /dev/full
  [1]
  $ for program in lab lab-watch lab-generate; do tavrenix-$program -h | head -n 1; tavrenix-$program --bad; done
  usage: tavrenix-lab IMAGE ARGUMENTS...
  tavrenix-lab: bad option --bad; see tavrenix-lab --help
  usage: tavrenix-lab-watch IMAGE
  tavrenix-lab-watch: bad option --bad; see tavrenix-lab-watch --help
  usage: tavrenix-lab-generate UNITS PATHS [VOLUMES]
  tavrenix-lab-generate: bad option --bad; see tavrenix-lab-generate --help
  [2]

A message names each fault of an image with its place. Images in the documents and generated images have none:

  $ python3 "$TESTDIR/image_faults.py"
  $ sed -n '/^    {$/,/^    }$/p' "$docs/lab/README.md" > readme.json; tavrenix-lab --check readme.json
  $ sed -n '/^{$/,/^}$/p' "$docs/docs/man/tavrenix-lab.8" > manual.json; tavrenix-lab --check manual.json
  $ tavrenix-lab-generate 2 300 4 > image.json; tavrenix-lab --check image.json; grep -c Path image.json
  600

The examples of the manual page work as they are printed:

  $ sed -n '/^\.Sh EXAMPLES/,/^\.Sh SEE/{s/\\e$/\\/;s/^\$ //p;s/^    //p}' "$docs/docs/man/tavrenix-lab.8" > examples
  $ sh -e examples 2>&1 | grep -e 'Disabled\|Least\|root'
    2 Unit 2           EXAMPLE          Simulated LUN    600A0B80001122334455667700000002    Least Queue Depth     
      Disabled             0101                           Fibre Channel   
  'tavrenix-lab' must be run as root...

A program that prints a warning still does its work. If it cannot read or generate an image, it says so in one line:

  $ echo '{"generation": 1, "entries": [{"id": 7, "class": "KsMedia", "properties": {"Leef": true}}]}' > odd.json
  $ tavrenix-lab-monitor odd.json json > /dev/null; tavrenix-lab odd.json list
  tavrenix-lab-monitor: odd.json: warning: line 1: entries[0].properties.Leef (id 7): unknown property
  tavrenix-lab: odd.json: warning: line 1: entries[0].properties.Leef (id 7): unknown property
  $ mkfifo pipe; truncate -s 1073741825 huge
  $ for image in none.json . pipe huge; do tavrenix-lab $image list; done
  tavrenix-lab: none.json: cannot be opened: No such file or directory
  tavrenix-lab: .: is a directory
  tavrenix-lab: pipe: is not a regular file
  tavrenix-lab: huge: is larger than 1 GiB
  [2]
  $ tavrenix-lab-generate 1 -1; tavrenix-lab-generate 1000000 10000 10000; tavrenix-lab-generate 1000 4 > /dev/full
  tavrenix-lab-generate: PATHS must be a number from 0 to 10000
  tavrenix-lab-generate: an image has at most 2000000 entries
  tavrenix-lab-generate: standard output: No space left on device
  [1]

tavrenix-lab-watch follows changes by an editor and by `modify`, even if the file's generation stays the same. It
reports a bad image once and keeps the last good one:

  $ tavrenix-lab-generate 2 1 0 > good.json; cp good.json image.json
  $ : > out; tavrenix-lab-watch image.json >> out 2>&1 & watcher=$!
  $ waitFor() { until grep -q "$1" out; do sleep 0.02; done; sed 's/^[-0-9]* [0-9:.]*  //' out | sort; : > out; }
  $ save() { cat > new.json; mv new.json image.json; }
  $ until [ "$(wc -l < out)" = 4 ] && grep -q ') S ' /proc/$watcher/stat; do sleep 0.02; done; waitFor Path
  Logical Unit Appeared          600A0B80001122334455667700000001
  Logical Unit Appeared          600A0B80001122334455667700000002
  Logical Unit Path Appeared     0101
  Logical Unit Path Appeared     0101
  $ tavrenix-lab image.json modify lun --id $unit --algorithm LeastBytes
  $ sed '/: 4294967300/s/KsSCSIMultipathed/Other/' good.json | save; waitFor Disappeared
  Logical Unit Disappeared       600A0B80001122334455667700000002
  $ echo '[]' | save; waitFor 'line 1'
  tavrenix-lab-watch: image.json: line 1: top level: must be an object, not an array
  $ echo '[]' | save; sleep 0.2; rm image.json; waitFor opened
  tavrenix-lab-watch: image.json: cannot be opened: No such file or directory
  $ cp good.json image.json; waitFor Appeared
  Logical Unit Appeared          600A0B80001122334455667700000002
  $ kill $watcher
