The list of logical units. sed marks the ends of lines, so that blanks there are seen.

  $ report() { image=$1; shift; tavrenix-lab "$TESTDIR/images/$image.json" "$@" | sed 's/$/|/'; }

Row by row: a full one; a long alias beside absent values; absent alias, widest vendor, too wide product and
identifier; other characters than printable ASCII as one "?" each, and an unknown algorithm; empty texts, and a product
whose 17th letter is cut; values that are no strings. Units of type 3, 12 or none are not units.

  $ report list list
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 Finance          ACME             Array            600A0B800000FF01                    Modified Round Robin  |
    2 abcdefghijklmnop (NULL)                                                                Least Queue Depth     |
    3 No Alias         Sixteen-letters! Seventeen-letter 000102030405060708090A0B0C0D0E0F101 Least Bytes           |
    4 Gr??e ? ?        ???              a?b?c?[1m?       16                                  Least Bytes           |
    5                  x?y              ????????????????                                     Least Bytes           |
    6 No Alias         (NULL)                            18                                  Least Bytes           |

Numbers of more than three digits push their row to the right:

  $ python3 > thousand.json <<'EOF'
  > import json
  > unit = {"Peripheral Device Type": 0}
  > print(json.dumps({"generation": 1, "entries": [
  >     {"id": i, "class": "KsSCSIMultipathedLogicalUnit", "parents": [], "properties": unit} for i in range(1, 1001)]}))
  > EOF
  $ tavrenix-lab thousand.json list | sed -n '1p;100,101p;1000,$p' | sed 's/$/|/'
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
   99 No Alias         (NULL)                                                                Least Bytes           |
  100 No Alias         (NULL)                                                                Least Bytes           |
  999 No Alias         (NULL)                                                                Least Bytes           |
  1000 No Alias         (NULL)                                                                Least Bytes           |
