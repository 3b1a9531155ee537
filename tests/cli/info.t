The report on single logical units. sed marks the ends of lines, so that blanks there are seen.

  $ report() { tavrenix-lab "$TESTDIR/images/info.json" "$@" | sed 's/$/|/'; }

Paths in every state, with long, unknown and absent interconnects and identifiers; volume sizes on both sides of every
boundary, cut at 31 characters, absent, and beyond what a signed 64-bit number holds:

  $ report info --id AA01
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

No paths, no volumes, no alias:

  $ report info -i BB02
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 No Alias         (NULL)                            BB02                                Least Bytes           |
  |
      Access State         Path Identifier                Interface       |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
  |

Several identifiers: one header, row numbers that run on, and an unknown one that uses up no number. Options may stand
behind other words, and in the middle of them:

  $ report info -i nowhere -i BB02 frobnicate --id=AA01 more | head -11
  Cannot locate lun with id nowhere|
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 No Alias         (NULL)                            BB02                                Least Bytes           |
  |
      Access State         Path Identifier                Interface       |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
  |
    2 Finance          ACME             Array            AA01                                Modified Round Robin  |

  $ report info -iAA01 --id BB02 | grep -n '^ *[0-9] \|Alias'
  1:    Alias            Vendor           Product          LUN Identifier                      Algorithm             |
  2:  1 Finance          ACME             Array            AA01                                Modified Round Robin  |
  27:  2 No Alias         (NULL)                            BB02                                Least Bytes           |

The environment does not end the options at the first word:

  $ POSIXLY_CORRECT=1 tavrenix-lab "$TESTDIR/images/info.json" info -i BB02 | head -2 | sed 's/$/|/'
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 No Alias         (NULL)                            BB02                                Least Bytes           |

Of two units with one identifier the later is meant, but the sections of both are shown, each with the volumes of both:

  $ report info -i CC03
      Alias            Vendor           Product          LUN Identifier                      Algorithm             |
    1 Later            (NULL)                            CC03                                Least Bytes           |
  |
      Access State         Path Identifier                Interface       |
      Active Optimized     11                                             |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
      disk2           Early                                      1.5 MB (1500000 Bytes)       |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
      disk3           Late                                       2.0 GB (2000000000 Bytes)    |
  |
  |
      Access State         Path Identifier                Interface       |
      Standby              12                                             |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
      disk2           Early                                      1.5 MB (1500000 Bytes)       |
  |
      Volumes:|
  |
      BSD Name        Name                                     Size                            |
      disk3           Late                                       2.0 GB (2000000000 Bytes)    |
  |

An identifier matches literally, and is told as it was typed:

  $ report info -i aa01 -i 'AA01 ' -i AA0 -i '' -i "$(printf 'AA\303')" -i 'ö'
  Cannot locate lun with id aa01|
  Cannot locate lun with id AA01 |
  Cannot locate lun with id AA0|
  Cannot locate lun with id |
  Cannot locate lun with id AA\xc3| (esc)
  Cannot locate lun with id ö|
  $ long=$(printf '%0300d' 0); test "$(report info -i $long)" = "Cannot locate lun with id $long|"

A path whose counters cannot be read has no state to show:

  $ tavrenix-lab "$TESTDIR/images/silent.json" info -i AA01 2> /dev/null | sed -n '5p' | sed 's/$/|/'
                           01                             Fibre Channel   |
