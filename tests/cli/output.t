Standard output that takes nothing changes no exit status, and ends the tool in no other way.

  $ python3 > many.json <<'EOF'
  > import json
  > unit = {"Peripheral Device Type": 0}
  > print(json.dumps({"generation": 1, "entries": [
  >     {"id": i, "class": "KsSCSIMultipathedLogicalUnit", "parents": [], "properties": unit} for i in range(1, 2001)]}))
  > EOF

A full disk:

  $ tavrenix-lab many.json list > /dev/full
  $ tavrenix-lab many.json info > /dev/full
  $ tavrenix-lab many.json > /dev/full
  [1]

A reader that has left before the first byte:

  $ python3 - many.json list <<'EOF'
  > import os, subprocess, sys
  > reader, writer = os.pipe()
  > os.close(reader)
  > for arguments in sys.argv[1:], sys.argv[1:2]:
  >     print(subprocess.run(["tavrenix-lab", *arguments], stdout=writer).returncode)
  > EOF
  0
  1

No standard output at all:

  $ tavrenix-lab many.json list >&-
  $ tavrenix-lab many.json modify lun -i nowhere -a LeastIO >&-
