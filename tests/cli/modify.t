The changes. A change that succeeds prints nothing. All end with status 0.

  $ python3 "$TESTDIR/images.py"; tavrenix-lab modify.json > usage
  [1]
  $ modify() { tavrenix-lab modify.json modify "$@"; }
  $ expectUsage() { modify "$@" > output && cmp output usage; }
  $ unit() { echo $(tavrenix-lab modify.json list | grep " $1 " | cut -c 92-
  > python3 -c "import json; print(*(e['properties'].get('Batch Count') for e in json.load(open('modify.json'))['entries']
  > if e['properties'].get('Logical Unit Unique Identifier') == {'\$data': '$1'}))"); }
  $ state() { tavrenix-lab modify.json info -i "$1" | grep " $2 " | cut -c 5-24 | sed 's/ *$//'; }

Algorithms have other names on the command line than in the reports. A change of the algorithm also sends the known
batch count, which is read only under round robin:

  $ modify lun --id AA01 --algorithm LeastIO; unit AA01
  Least Queue Depth 16
  $ modify lun -a LeastBytes -i AA01; modify lun -aRoundRobin -iAA01; unit AA01
  Modified Round Robin 0

An unknown algorithm is ignored: an earlier one stays, and alone it makes no change. The same holds for a bad option:

  $ modify lun -i AA01 -a RoundRobin -a LeastIO -a Bogus; unit AA01
  Least Queue Depth 0
  $ for word in Bogus leastio ''; do expectUsage lun -i AA01 -a "$word"; done; expectUsage lun -i AA01
  $ modify lun -i AA01 -z -a RoundRobin 2>&1 | grep -c z; unit AA01
  1
  Modified Round Robin 0

Only the digits at the beginning of a batch count are read. Of several the last counts. A bad one ends the command:

  $ modify lun -i AA01 -b 12abc; unit AA01; modify lun -i AA01 --batchCount 7 --batchCount=4294967295; unit AA01
  Modified Round Robin 12
  Modified Round Robin 4294967295
  $ modify lun -i AA01 -b ' +9' -a LeastBytes
  $ for count in 0 4294967296 abc 0x10 -1 '' 99999999999999999999999; do
  >   modify lun -b 5 -b "$count" -i AA01 -a RoundRobin --frobnicate 2>&1 | { read line; echo "$line"; cmp - usage; }; done | uniq -c
        7 Specified --batchCount is out of range 0 - 0xFFFFFFFF
  $ unit AA01
  Least Bytes 9

The unit must exist. Of several identifiers the last counts, a missing one is empty, and 255 characters are read:

  $ modify lun -a LeastIO -i AA01 -i aa01; modify lun -a LeastIO | sed 's/$/|/'
  Unable to find lun aa01
  Unable to find lun |
  $ longest=$(printf 'AB%.0s' $(seq 127)); modify lun -b 3 -i $longest
  Unable to change batch count: reason unknown
  $ for id in ${longest}A $longest$longest; do modify lun -b 3 -i $id; done | cut -c 20- | sort -u | wc -c
  256

If two units have the same identifier, the later one is changed. A batch count needs a known algorithm. A refusal prints
its reason. The batch count is tried after it; if it is refused without a reason, it prints the earlier one:

  $ modify lun -i CC03 -b 3; modify lun -i CC03 -b 3 -a LeastIO; unit CC03
  Unable to change batch count: reason unknown
  Least Bytes Least Queue Depth None 3
  $ for image in refusing10 refusing01 refusing11; do
  >   cp $image.json modify.json; modify lun -i AA01 -b 5 -a LeastIO; unit AA01; done
  Unable to change algorithm: KsRegistryEntrySetObProperty failed (error 0x08000003, result -16)
  Modified Round Robin 5
  Unable to change batch count: reason unknown
  Least Queue Depth 16
  Unable to change algorithm: KsRegistryEntrySetObProperty failed (error 0x08000003, result -16)
  Unable to batch count: KsRegistryEntrySetObProperty failed (error 0x08000003, result -16)
  Modified Round Robin 16

A disabled path shows as Disabled in every state, and shows its state again once it is enabled. Of several units and
paths the last count. A word after --disable is not its argument:

  $ python3 "$TESTDIR/images.py"; state AA01 0B; modify path --lun AA01 --id 0B --disable; state AA01 0B
  Standby
  Disabled
  $ modify path -l AA01 -i 0B --enable; state AA01 0B; modify path -l nowhere -l AA01 -i 0C -i 0A -d frobnicate; state AA01 0A
  Standby
  Disabled
  $ for words in '' '-l AA01 -i 0A' '-i 0A -d' '-l AA01 -d' '-l AA01 -i 0A -ed'; do expectUsage path $words; done

The unit must exist, and the path must be one of its paths:

  $ modify path -l aa01 -i 0A -d; modify path -l '' -i 0A -d | sed 's/$/|/'; modify path -l AA01 -i '' -d | sed 's/$/|/'
  Unable to find lun aa01
  Unable to find lun |
  Unable to find path |
  $ modify path -l AA01 -i 0a -d; modify path -l AA01 -i 0C -e; modify path -l CC03 -i 0A -e
  Unable to find path 0a
  Unable to find path 0C
  Unable to find path 0A
  $ cp refusing11.json modify.json; modify path -l AA01 -i 0A -e; modify path -l AA01 -i 0A -d; state AA01 0A
  Unable to enable path: Unable to set property (error 0x08000003, result -16)
  Unable to disable path: Unable to set property (error 0x08000003, result -16)
  Active Optimized
