bash and zsh use the same file of completions. An image stands for the machine.

  $ samples=$TESTDIR/../../samples file=$TESTDIR/../../completions/tavrenix
  $ mkdir bin && printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$BUILD/lab/tavrenix-lab" "$samples/small.json" >bin/tavrenix
  $ chmod +x bin/tavrenix && export PATH=$PWD/bin:$BUILD/lab:$PATH && source "$file"
  $ in_bash() {
  >   COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  >   _tavrenix_bash "$1"
  >   echo "${COMPREPLY[@]}"
  > }
  $ cat >zsh.zsh <<'END'
  > id() { echo 0 }
  > file=$1 service=${2:t} words=("${@:2}") CURRENT=$(($# - 1))
  > compset() { words[CURRENT]=${words[CURRENT]#*=} }
  > compadd() { echo ${(M)${(P)2}:#$words[CURRENT]*} }
  > _files() { echo $words[CURRENT]*(N) }
  > source $file
  > END
  $ id() { echo 0; }
  $ complete_words() {
  >   in_bash "$@" >bash.out
  >   zsh -f zsh.zsh "$file" "$@" >zsh.out
  >   diff bash.out zsh.out && cat bash.out
  > }

Verbs, objects, options and algorithms, with the options before or after the words:

  $ complete_words tavrenix Modify LUN --
  --id --algorithm --batchCount
  $ complete_words tavrenix modify lun --algorithm Least
  LeastIO LeastBytes

Units, and the paths of the unit that was named; bash makes three words of --id=X, zsh one:

  $ unit=600A0B8000112233445566778899AAB
  $ complete_words tavrenix info --id ''
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
  $ complete_words tavrenix modify path --lun ${unit}B --disable --id ''
  0101 0102 0103
  $ in_bash tavrenix modify path --lun = ${unit}B --id = 01
  0101 0102 0103
  $ zsh -f zsh.zsh "$file" tavrenix modify path --lun=${unit}B --id=01
  0101 0102 0103

The first argument of the simulation is an image. Its name may have blanks:

  $ cp "$samples/small.json" 'an image.json'
  $ complete_words tavrenix-lab an
  an image.json
  $ complete_words tavrenix-lab 'an image.json' modify path -l ${unit}C -i 02
  0201 0202 0203

The report cuts an identifier that is wider than its column. The completion offers all of it:

  $ complete_words tavrenix-lab "$samples/oddities.json" info -i AB >unit && grep -cxE '(AB){127}' unit
  1
  $ complete_words tavrenix-lab "$samples/oddities.json" modify path -l "$(cat unit)" -i 0101 | grep -cxE '(01){40}'
  1

For an ordinary user there are no identifiers to complete, and the tool is not started:

  $ id() { echo 1000; }
  $ in_bash tavrenix info --id ''
  
