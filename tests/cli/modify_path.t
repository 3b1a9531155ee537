Enabling and disabling a path. Success says nothing; every outcome ends with status 0.

  $ cp "$TESTDIR"/images/*.json .
  $ tavrenix-lab modify.json > usage
  [1]
  $ modify() { tavrenix-lab modify.json modify path "$@"; }
  $ expectUsage() { modify "$@" > output && cmp output usage; }
  $ state() { tavrenix-lab modify.json info -i "$1" | grep " $2 " | cut -c 5-24 | sed 's/ *$//'; }

A disabled path says so whatever its state, which shows again when it is enabled:

  $ state AA01 0A; state AA01 0B
  Active Optimized
  Standby
  $ modify --lun AA01 --id 0B --disable; state AA01 0A; state AA01 0B
  Active Optimized
  Disabled
  $ modify -d -i 0B -l AA01; state AA01 0B
  Disabled
  $ modify -l AA01 -i 0B --enable; state AA01 0B
  Standby
  $ modify -e -l AA01 -i 0A; state AA01 0A
  Active Optimized
  $ modify -l nowhere -l BB02 -d -i 0A -i 0C; state BB02 0C
  Disabled

Unit, path, and one of enable and disable must be given:

  $ expectUsage
  $ expectUsage -l AA01 -i 0A
  $ expectUsage -i 0A -d
  $ expectUsage -l AA01 -d
  $ expectUsage -l AA01 -i 0A -e -d
  $ expectUsage -ed -l AA01 -i 0A
  $ state AA01 0A
  Active Optimized

Enable and disable take no argument: a word behind them is none of theirs.

  $ modify -l AA01 -d frobnicate -i 0A; state AA01 0A
  Disabled

The unit and, among its own paths, the path must be there. Matches are literal, and an empty identifier is one:

  $ modify -l nowhere -i 0A -d
  Unable to find lun nowhere
  $ modify -l aa01 -i 0A -d
  Unable to find lun aa01
  $ modify -l '' -i 0A -d | sed 's/$/|/'
  Unable to find lun |
  $ modify -l AA01 -i 0a -d
  Unable to find path 0a
  $ modify -l AA01 -i '' -d | sed 's/$/|/'
  Unable to find path |
  $ modify -l AA01 -i 0C -e
  Unable to find path 0C
  $ modify -l CC03 -i 0A -e
  Unable to find path 0A
  $ state BB02 0C
  Disabled

A refusal is described, and changes nothing:

  $ for change in --enable --disable; do
  >   cp refusing.json modify.json; modify -l AA01 -i 0A $change; state AA01 0A; done
  Unable to enable path: Unable to set property (error 0x08000003, result -536870206)
  Active Optimized
  Unable to disable path: Unable to set property (error 0x08000003, result -536870206)
  Active Optimized
