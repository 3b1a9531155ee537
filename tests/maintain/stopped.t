A run that is stopped by a signal or not confirmed, and two runs at once.

  $ . "$TESTDIR/../monitor/setup.sh"
  $ maintain() { tavrenix-lab-maintain try.json "$@"; }
  $ export SUDO_USER=eve
  $ with "$well" && mkfifo keys && exec 3<>keys

until_step N VERB...: begins the verb in the background and confirms its steps until it asks for the N-th.

  $ until_step() {
  >   local last=$1 step
  >   rm -f log && : >log
  >   tavrenix-lab-maintain try.json "${@:2}" --confirm <keys >>log 2>&1 & run=$!
  >   for ((step = 1; step <= last; ++step)); do
  >     until [ "$(grep -c 'Enter goes on' log)" = "$step" ]; do sleep 0.02; done
  >     [ "$step" = "$last" ] || echo >&3
  >   done
  > }

Stopped, and not confirmed:

  $ for signal in INT TERM HUP; do
  >   until_step 3 drain --host 4; kill -$signal "$run"; wait "$run"; echo "$? $(out)"; grep brought log
  > done | sort | uniq -c
        3 1 
        3 stopped: what was taken out is brought back
  $ yes '' | head -n 2 | maintain drain --host 4 --confirm | grep back
  not confirmed: what was taken out is brought back
  finance: path sdd is back
  finance: path sdc is back
  result     undone, 2 paths back
  $ (echo; echo no) | maintain drain --host 4 --confirm >log; echo "$? $(out)"
  1 

Two at once: the second is refused, and status names the first:

  $ until_step 2 drain --host 4
  $ maintain drain --path sdb
  tavrenix-lab-maintain: another run is at work: drain by eve since 20*Z, process * (glob)
  [2]
  $ maintain status | sed -n 2p
  A run is at work: drain by eve since 20*Z, process * (glob)
  $ kill -TERM "$run"; wait "$run"; out
  
