`top` shows as many columns as fit: as a batch of tables, or live on a terminal.

  $ . "$TESTDIR/setup.sh"
  $ top() { monitor "$samples/degraded.json" top --delay 1 "$@"; }
  $ COLUMNS=60 top --batch --unfold --sort health
  2 units, 1 not well; 6 paths; read 0 B/s, written 0 B/s
    NAME            STATE       READ/s  WRITE/s    CMD/s SHARE
  - ! finance       2/4            0 B      0 B        0
      ! sdc         failed         0 B      0 B        0     -
      ! sde         failed         0 B      0 B        0     -
      sdb           optimized      0 B      0 B        0     -
      sdd           nonoptim.      0 B      0 B        0     -
  - archive         2/2            0 B      0 B        0
      sdf           optimized      0 B      0 B        0     -
      sdg           optimized      0 B      0 B        0     -
  $ COLUMNS=40 top --batch --filter ARCH
  2 units, 1 not well; 6 paths; read 0 B/.
    NAME       STATE       READ/s  WRITE/s
  + archive    2/2            0 B      0 B
  $ top
  tavrenix-lab-monitor: top needs a terminal; use --batch, or status
  [2]
  $ on_terminal() { script -qec "stty rows $1 cols $2; tavrenix-lab-monitor many.json top --delay 1" /dev/null; }
  $ tavrenix-lab-generate 1000 2 >many.json
  $ printf '?x u/Unit 99\nSrq' | TERM=xterm on_terminal 10 40 | grep -o '1000 units\|fold or unfold all\|by name' | sort -u
  1000 units
  by name
  fold or unfold all
  $ printf 'q' | TERM=xterm on_terminal 1 1 >one && printf q | TERM=nothing on_terminal 10 40 | grep -o 'the term.*known'
  the terminal's type in TERM is not known
