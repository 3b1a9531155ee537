The reports of `list` and `info`. sed marks the end of each line, to show blanks.

  $ python3 "$TESTDIR/images.py"
  $ report() { tavrenix-lab "$@" 2> /dev/null | sed 's/$/|/'; }

The rows: all values; a long alias and absent values; no alias, the widest vendor, and a product and identifier that are
too wide; one "?" for each character that is not printable ASCII, and an unknown algorithm; empty texts, and a product
with a 17th letter, which is cut; values that are no strings. Entries of type 3, 12 or none are no units.

  $ report list.json list
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 Finance          ACME             Array            600A0B800000FF01                    Modified Round Robin  |
    2 abcdefghijklmnop (NULL)                                                                Least Queue Depth     |
    3 No Alias         Sixteen-letters! Seventeen-letter 000102030405060708090A0B0C0D0E0F101 Least Bytes           |
    4 Gr??e ? ?        ???              a?b?c?[1m?       16                                  Least Bytes           |
    5                  x?~              ????????????????                                     Least Bytes           |
    6 No Alias         (NULL)                            18                                  Least Bytes           |
  $ report thousand.json list | sed -n '100p;1001p'
   99 No Alias         (NULL)                                                                Least Bytes           |
  1000 No Alias         (NULL)                                                                Least Bytes           |

Paths in every state, with long, unknown and absent interconnects and identifiers. The last has no counters, and so no
state. Volume sizes on both sides of every boundary, cut at 31 characters, absent, and of more than 64 bits:

  $ report info.json info --id AA01
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 Finance          ACME             Array            AA01                                Modified Round Robin  |
  |
      Access State         Path Identifier                Interface       |
      Active Optimized     01                             Fibre Channel   |
      Disabled             02                             Serial Attached |
      Active Non-Optimized 000102030405060708090A0B0C0D0E fibre channel in|
      Standby                                             Fibre Channel In|
      Unavailable          05                                             |
      Disabled             06                             iSCSI           |
                           07                                             |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
      disk1s1         zero                                       0.0 MB (0 Bytes)             |
      disk1s2         last MB                                 1000.0 MB (999999999 Bytes)     |
      disk1s3         first GB                                   1.0 GB (1000000000 Bytes)    |
      disk1s4         last GB                                 1000.0 GB (1000000000000 Bytes) |
      disk1s5         first TB                                   1.0 TB (1000000000001 Bytes) |
      disk1s6         largest                                 9223372.0 TB (92233720368547758 |
      disk1s7         too large                                                               |
      disk1s8         negative                                  -2.5 MB (-2500000 Bytes)      |
      disk1s9         smallest                                -9223372036854.8 MB (-922337203 |
      disk10s10-longe A volume whose name has 44 characters, G                                |
                      no device                                500.1 GB (500107862016 Bytes)  |
  |

Several identifiers: one header and consecutive row numbers; an unknown identifier takes no number. If two units have
the same identifier, only the later one has a row, but the sections of both follow, each with the volumes of both. Shown
without blank lines and the headers of paths:

  $ report info.json info -i nowhere -i BB02 frobnicate --id=CC03 more | grep -v '^|$\|Access State'
  Cannot locate lun with id nowhere|
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 No Alias         (NULL)                            BB02                                Least Bytes           |
      Volumes:|
      BSD Name        Name                                     Size                            |
    2 Later            (NULL)                            CC03                                Least Bytes           |
      Active Optimized     11                                             |
      Volumes:|
      BSD Name        Name                                     Size                            |
      disk2           Early                                      1.5 MB (1500000 Bytes)       |
      Volumes:|
      BSD Name        Name                                     Size                            |
      Standby              12                                             |
      Volumes:|
      BSD Name        Name                                     Size                            |
      disk2           Early                                      1.5 MB (1500000 Bytes)       |
      Volumes:|
      BSD Name        Name                                     Size                            |

An identifier must match letter by letter. The message prints it as it was typed:

  $ report info.json info -i aa01 -i 'AA01 ' -i AA0 -i '' -i "$(printf 'AA\303')" -i 'ö'
  Cannot locate lun with id aa01|
  Cannot locate lun with id AA01 |
  Cannot locate lun with id AA0|
  Cannot locate lun with id |
  Cannot locate lun with id AA\xc3| (esc)
  Cannot locate lun with id ö|
  $ long=$(printf '%0300d' 0); test "$(report info.json info -i $long)" = "Cannot locate lun with id $long|"
