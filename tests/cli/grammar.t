The usage text, the words of the command line, and the exit statuses. sed marks the end of each line, to show blanks.

  $ python3 "$TESTDIR/images.py"
  $ ok() { tavrenix-lab empty.json "$@"; }
  $ ordinary() { "$(command -v tavrenix-lab)" ordinary-user.json "$@"; }

Without arguments, the command prints the usage for any user and ends with status 1:

  $ ordinary > usage; echo $?
  1
  $ sed 's/$/|/' usage
  tavrenix|
  Utility to manage multiple paths to logical units|
  |
  Usage:  tavrenix <verb> <direct object> <options>, where <verb> is as follows:|
  |
     verb:|
         list|
  |
         info|
             required arguments:|
                 --id <lun identifier> | -i <lun identifier>|
  |
         modify|
             direct objects:|
                 lun|
                    --id <lun identifier> | -i <lun identifier>|
                    --algorithm <load balancing algorithm> | -a <load balancing algorithm>|
                      RoundRobin, LeastIO, LeastBytes|
                    optional arguments:|
                           --batchCount <round robin batch count> | -b <round robin batch count>|
  |
                 path|
                    --lun <lun identifier> | -l <lun identifier>|
                    --id <path identifier> | -i <path identifier>|
                    --enable <enable path> | -e <enable path>|
                    --disable <disable path> | -d <disable path>|
  |

With arguments, the command refuses any user but the superuser. The message has the name that the program was called by:

  $ ordinary frobnicate
  'tavrenix-lab' must be run as root...
  [1]

The command prints the usage, with status 0, for everything that it does not understand. Only the option parser writes a
message, to standard error:

  $ expectUsage() { ok "$@" > output 2> diagnostics && cmp output usage && cat diagnostics; }
  $ for words in frobnicate '' lis lists info 'info AA01' modify 'modify frobnicate' 'modify lun' 'modify path' \
  >   'lun modify' '-i info'; do expectUsage $words; done
  $ for words in 'info --frobnicate' 'info -i' 'info --ID AA01' 'modify path -l A -i B --enable=yes'; do
  >   expectUsage $words; done
  *--frobnicate* (glob)
  *requires an argument* (glob)
  *--ID* (glob)
  *enable* (glob)

Verbs and direct objects may have any letter case. Options may come before, between or after them. If there are no units,
`list` prints no header either. It ignores words after the verb:

  $ ok -i NOBODY Info
  Cannot locate lun with id NOBODY
  $ ok -i NOBODY --algorithm LeastIO MODIFY LUN
  Unable to find lun NOBODY
  $ ok -e mOdIfY --lun NOBODY pAtH --id 0A
  Unable to find lun NOBODY
  $ ok LIST -x frobnicate --id

No environment variable changes anything:

  $ hostile="POSIXLY_CORRECT=1 LC_ALL=C.UTF-8 LANGUAGE=de TZ=Pacific/Kiritimati COLUMNS=7 TMPDIR=/x PATH=/x IFS=0 DM_DEV_DIR=/x SYSFS_PATH=/x"
  $ for words in list "info --wrong" "info -i AA01 more -i NONE"; do for run in "$(command -v tavrenix-lab) info.json" "$(command -v tavrenix)"; do
  >   env -i $run $words >clean 2>&1; env -i $hostile $run $words >soiled 2>&1; cmp clean soiled; done; done

The exit status does not change if standard output cannot be written: a full disk, a closed output, a closed pipe:

  $ tavrenix-lab thousand.json list > /dev/full; tavrenix-lab thousand.json list >&-
  $ { tavrenix-lab thousand.json list; echo $? > status; } | true; cat status
  0
