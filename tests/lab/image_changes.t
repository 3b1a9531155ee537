What a change does to the image's file.

  $ tavrenix-lab-generate 2 3 0 | sed 's/"generation": 1/"generation": 4294967295/' > image.json
  $ unit=600A0B80001122334455667700000001; switch() { tavrenix-lab "$1" modify path -l $unit -i "$2" "$3"; }

A change alters only what it has to, and lays the text out for a person. No change is lost if many are made at once:

  $ words() { tr -d ' \n' < "$1" | sed 's/[]{},[]/&\n/g'; }; words image.json > before
  $ tavrenix-lab image.json modify lun -i $unit -b 9; words image.json | diff -U0 before - | grep '^[-+]"'
  -"generation":4294967295,
  +"generation":1,
  -"BatchCount":8,
  +"BatchCount":9,
  $ awk 'length > 100' image.json; wc -l < image.json
  122
  $ for path in 0101 0102 0103; do
  >   for round in 1 2 3 4 5 6 7 8 9; do
  >     switch image.json $path -d; switch image.json $path -e; switch image.json $path -d
  >   done &
  > done; wait; grep '"generation"' image.json; tavrenix-lab image.json info -i $unit | grep -c Disabled
    "generation": 82,
  3

A file stays as it is if no file of the same owner, group and names can replace it:

  $ mkdir folder; cp image.json folder; cd folder; cp image.json before
  $ bare() { if [ "$(id -u)" = 0 ]; then setpriv --bounding-set=-all "$@"; else "$@"; fi; }
  $ refuse() { bare tavrenix-lab image.json modify lun -i $unit -a LeastIO > /dev/null; cmp image.json before; }
  $ chmod 500 .; refuse; chmod 700 .
  tavrenix-lab: image.json: cannot be replaced by a new file beside it: Permission denied
  $ chmod 400 image.json; refuse; chmod 600 image.json
  tavrenix-lab: image.json: cannot be opened for a change: Permission denied
  $ ln image.json other; refuse; rm other
  tavrenix-lab: image.json: has more than one name (hard links), and a change would reach only this one
  $ [ "$(id -u)" != 0 ] || { chgrp 1 image.json; refuse 2>&1 | grep -q 'same owner and group'; }; cd ..

Links stay links, and a file that a killed process has left behind does no harm. The new file has the mode and the
access control list of the old one, and not the list that its folder would give it:

  $ ln -s nowhere .image.json.tavrenix-lab; ln -s image.json link.json
  $ cat > lists.py <<END
  > import os, struct, sys
  > NAME, NOBODY = 'system.posix_acl_access', 0xFFFFFFFF
  > def names(user): return struct.pack('<I' + 'HHI' * 5, 2, 1, 6, NOBODY, 2, 4, user, 4, 4, NOBODY, 16, 4, NOBODY, 32, 0, NOBODY)
  > if sys.argv[1] == 'folder': os.setxattr('.', 'system.posix_acl_default', names(2000))
  > if sys.argv[1] == 'file': os.setxattr('image.json', NAME, names(1000))
  > if sys.argv[1] == 'show': print([os.getxattr('image.json', key) == names(1000) for key in os.listxattr('image.json')])
  > END
  $ chmod 640 image.json; switch link.json 0101 -e; stat -c %a image.json; find . -type l
  640
  ./link.json
  $ python3 lists.py folder 2> /dev/null || exit 80 # no lists here
  $ switch link.json 0102 -e; python3 lists.py show; python3 lists.py file; switch link.json 0103 -e; python3 lists.py show
  []
  [True]
