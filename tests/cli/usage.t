The usage text, the words of the command line, and the exit statuses. The two blanks that open each line of a
command or of its output are the test format's own. sed marks the ends of lines, so that blanks there are seen.

  $ ok() { tavrenix-lab "$TESTDIR/images/empty.json" "$@"; }
  $ ordinary() { tavrenix-lab "$TESTDIR/images/ordinary-user.json" "$@"; }

Without arguments any user gets the usage, and status 1:

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

With arguments only the superuser gets further. The message names the program as it was called:

  $ ordinary list
  'tavrenix-lab' must be run as root...
  [1]
  $ ordinary frobnicate 2> message; echo $?; cat message
  1
  'tavrenix-lab' must be run as root...

Everything that is not understood gets the usage on standard output, and status 0:

  $ expectUsage() { ok "$@" > output 2> diagnostics && cmp output usage && cat diagnostics; }
  $ expectUsage frobnicate
  $ expectUsage ''
  $ expectUsage lis
  $ expectUsage lists
  $ expectUsage info
  $ expectUsage info AA01
  $ expectUsage modify
  $ expectUsage modify frobnicate
  $ expectUsage modify lun
  $ expectUsage modify path
  $ expectUsage lun modify

The verb is the first word and the direct object the second; options stand before, between or behind them:

  $ ok -i NOBODY info
  Cannot locate lun with id NOBODY
  $ ok -i NOBODY --algorithm LeastIO modify lun
  Unable to find lun NOBODY
  $ ok -e modify --lun NOBODY path --id 0A
  Unable to find lun NOBODY
  $ expectUsage -i info

A diagnostic of the option parser goes to standard error, and the option counts for nothing:

  $ expectUsage info --frobnicate
  *--frobnicate* (glob)
  $ expectUsage info -i
  *requires an argument* (glob)
  $ expectUsage info --ID AA01
  *--ID* (glob)
  $ expectUsage modify path -l AA01 -i 0A --enable=yes
  *enable* (glob)

Verbs and direct objects ignore letter case:

  $ ok LIST
  $ ok Info -i AA01
  Cannot locate lun with id AA01
  $ ok MODIFY LUN -i AA01 -a LeastIO
  Unable to find lun AA01
  $ ok mOdIfY pAtH -l AA01 -i 0A -e
  Unable to find lun AA01

Without logical units a list is empty, down to its header; what follows the verb does not matter:

  $ ok list; ok list -x frobnicate --id
