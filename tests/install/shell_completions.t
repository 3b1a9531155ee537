bash and zsh use the same files of completions, one for each program. An image stands for the machine.

  $ samples=$TESTDIR/../../samples files=$TESTDIR/../../completions
  $ mkdir bin && printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$BUILD/lab/tavrenix-lab" "$samples/small.json" >bin/tavrenix
  $ chmod +x bin/tavrenix && export PATH=$PWD/bin:$BUILD/lab:$PATH
  $ for file in "$files"/*; do source "$file"; done
  $ in_bash() {
  >   COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  >   case $1 in *-monitor) _tavrenix_monitor_bash "$1" ;; *-maintain) _tavrenix_maintain_bash "$1" ;; *) _tavrenix_bash "$1" ;; esac
  >   echo "${COMPREPLY[@]}"
  > }
  $ cat >zsh.zsh <<'END'
  > id() { echo 0 }
  > service=${2:t} words=("${@:2}") CURRENT=$(($# - 1))
  > compset() { words[CURRENT]=${words[CURRENT]#*=} }
  > compadd() { echo ${(M)${(P)2}:#$words[CURRENT]*} }
  > _files() { echo $words[CURRENT]*(N) }
  > case $service in *-monitor|*-maintain) source $1/tavrenix-${service##*-} ;; *) source $1/tavrenix ;; esac
  > END
  $ id() { echo 0; }
  $ complete_words() {
  >   in_bash "$@" >bash.out
  >   zsh -f zsh.zsh "$files" "$@" >zsh.out
  >   diff bash.out zsh.out && cat bash.out
  > }

Verbs, objects and options, with the options before or after the words:

  $ complete_words tavrenix Modify LUN --
  --id --algorithm --batchCount

Units, and the paths of the unit that was named; bash makes three words of --id=X, zsh one:

  $ unit=600A0B8000112233445566778899AAB
  $ complete_words tavrenix info --id ''
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
  $ complete_words tavrenix modify path --lun ${unit}B --disable --id ''
  0101 0102 0103
  $ in_bash tavrenix modify path --lun = ${unit}B --id = 01
  0101 0102 0103
  $ zsh -f zsh.zsh "$files" tavrenix modify path --lun=${unit}B --id=01
  0101 0102 0103

The first argument of the simulation is an image. Its name may have blanks:

  $ cp "$samples/small.json" 'an image.json'
  $ complete_words tavrenix-lab an; complete_words tavrenix-lab-monitor an
  an image.json
  an image.json
  $ complete_words tavrenix-lab 'an image.json' modify path -l ${unit}C -i 02
  0201 0202 0203

The report cuts an identifier that is wider than its column. The completion offers all of it:

  $ complete_words tavrenix-lab "$samples/oddities.json" info -i AB >unit && grep -cxE '(AB){127}' unit
  1
  $ complete_words tavrenix-lab "$samples/oddities.json" modify path -l "$(cat unit)" -i 0101 | grep -cxE '(01){40}'
  1

The monitor's verbs, options and their values, its units and its files:

  $ complete_words tavrenix-monitor ''
  status check json metrics picture top watch baseline --help --version
  $ complete_words tavrenix-monitor picture --format ''
  text svg dot html
  $ complete_words tavrenix-lab-monitor 'an image.json' status --unit ${unit}
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
  $ complete_words tavrenix-lab-monitor 'an image.json' check --baseline an
  an image.json

  $ complete_words tavrenix-maintain ''
  plan drain status undo restore --help --version
  $ cp "$samples/degraded.json" degraded.json && complete_words tavrenix-lab-maintain degraded.json drain --host-port ''
  2100001b32000001 2100001b32000002
  $ complete_words tavrenix-lab-maintain degraded.json restore --w
  --wait

For an ordinary user there are no identifiers to complete, and the tool is not started:

  $ id() { echo 1000; }
  $ in_bash tavrenix info --id ''
  
