Changing a logical unit. Success says nothing; every outcome ends with status 0.

  $ cp "$TESTDIR"/images/*.json .
  $ tavrenix-lab modify.json > usage
  [1]
  $ modify() { tavrenix-lab modify.json modify lun "$@"; }
  $ expectUsage() { modify "$@" > output && cmp output usage; }
  $ algorithm() { tavrenix-lab modify.json list | grep " $1 " | cut -c 92- | sed 's/ *$//'; }
  $ batchCount() { python3 -c "import json; print([e['properties'].get('Batch Count') for e in
  > json.load(open('modify.json'))['entries'] if e['id'] == $1][0])"; }

Each algorithm under its name on the command line, which differs from the name in the reports:

  $ algorithm AA01
  Modified Round Robin
  $ modify --id AA01 --algorithm LeastIO; algorithm AA01; batchCount 100
  Least Queue Depth
  16
  $ modify -a LeastBytes -i AA01; algorithm AA01
  Least Bytes
  $ modify -aRoundRobin -iAA01; algorithm AA01
  Modified Round Robin

A change of algorithm sends the batch count along, as known: it is read under round robin alone, and 0 where it was not.

  $ batchCount 100
  0

An unknown word is passed over: an earlier choice stays, and alone it is no change at all. Case counts:

  $ modify -i AA01 -a LeastIO -a Bogus; algorithm AA01
  Least Queue Depth
  $ modify -i AA01 -a LeastIO -a RoundRobin; algorithm AA01
  Modified Round Robin
  $ expectUsage -i AA01 -a Bogus
  $ expectUsage -i AA01 -a leastio
  $ expectUsage -i AA01 -a ''
  $ expectUsage -i AA01

The batch count takes leading digits and the last of several. Both changes can be made at once:

  $ modify -i AA01 -b 12abc; batchCount 100
  12
  $ modify -i AA01 --batchCount 7 --batchCount=4294967295; batchCount 100
  4294967295
  $ modify -i AA01 -b ' +9' -a LeastBytes; batchCount 100; algorithm AA01
  9
  Least Bytes

What is out of range ends the command at once, whatever stands before or behind it:

  $ outOfRange() { modify "$@" 2>&1 | { read line; echo "$line"; cmp - usage; }; }
  $ for count in 0 4294967296 abc 0x10 -1 '' 99999999999999999999999; do outOfRange -i AA01 -a RoundRobin -b "$count"; done
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  $ outOfRange -b 5 -b 0 -b 6 --frobnicate
  Specified --batchCount is out of range 0 - 0xFFFFFFFF
  $ algorithm AA01; batchCount 100
  Least Bytes
  9

The unit must be there; the last identifier counts, and none given is an empty one:

  $ modify -a LeastIO -i AA01 -i aa01
  Unable to find lun aa01
  $ modify -a LeastIO | sed 's/$/|/'
  Unable to find lun |
  $ algorithm AA01
  Least Bytes

Up to 255 characters of an identifier are read, and no identifier is longer than 254:

  $ python3 -c 'print("AB" * 127)' > longest; sed "s/CC03/$(cat longest)/" modify.json > long.json
  $ tavrenix-lab long.json modify lun -b 3 -i "$(cat longest)"
  Unable to change batch count: reason unknown
  $ tavrenix-lab long.json modify lun -b 3 -i "$(cat longest)A" | wc -c
  275
  $ tavrenix-lab long.json modify lun -b 3 -i "$(cat longest)$(cat longest)" | wc -c
  275

An option that the parser refuses counts for nothing:

  $ modify -i AA01 -z -a RoundRobin 2> diagnostics; grep -c z diagnostics; algorithm AA01
  1
  Modified Round Robin

A batch count needs a known algorithm, and its failure has no description of its own:

  $ modify -i CC03 -b 3
  Unable to change batch count: reason unknown
  $ modify -i CC03 -b 3 -a LeastIO; algorithm CC03; batchCount 120
  Least Queue Depth
  3

A refused algorithm is described. The batch count is tried all the same, and repeats that description where its own
refusal has none:

  $ try() { sed "s/\[-536870206, -536870206\]/$1/" refusing.json > modify.json; shift; modify "$@"; }
  $ try '[-536870206]' -i AA01 -a LeastIO; algorithm AA01
  Unable to change algorithm: KsRegistryEntrySetObProperty failed (error 0x08000003, result -536870206)
  Modified Round Robin
  $ try '[-536870206]' -i AA01 -b 5; batchCount 100
  Unable to change batch count: reason unknown
  16
  $ try '[-536870206, -536870206]' -i AA01 -b 5 -a LeastIO; batchCount 100; algorithm AA01
  Unable to change algorithm: KsRegistryEntrySetObProperty failed (error 0x08000003, result -536870206)
  Unable to batch count: KsRegistryEntrySetObProperty failed (error 0x08000003, result -536870206)
  16
  Modified Round Robin
  $ try '[-536870206, 0]' -i AA01 -b 5 -a LeastIO; batchCount 100; algorithm AA01
  Unable to change algorithm: KsRegistryEntrySetObProperty failed (error 0x08000003, result -536870206)
  5
  Modified Round Robin
  $ try '[0, -536870206]' -i AA01 -b 5 -a LeastIO; batchCount 100; algorithm AA01
  Unable to change batch count: reason unknown
  16
  Least Queue Depth
