Both shells complete from one file. The machine that tavrenix sees here is an image.

  $ image="$TESTDIR/../../samples/small.json"
  $ file="$TESTDIR/../../completions/tavrenix"
  $ mkdir bin && cat >bin/tavrenix <<END
  > #!/bin/sh
  > exec "$BUILD/lab/tavrenix-lab" "$image" "\$@"
  > END
  $ chmod +x bin/tavrenix
  $ export PATH=$PWD/bin:$BUILD/lab:$PATH
  $ source "$file"
  $ in_bash() {
  >   COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  >   _tavrenix_bash "$1"
  >   echo "${COMPREPLY[@]}"
  > }
  $ cat >zsh.zsh <<'END'
  > id() { echo 0 }
  > file=$1 service=${2:t} words=("${@:2}") CURRENT=$(($# - 1))
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

Verbs, objects, options and algorithms, with the options before or behind the words:

  $ complete_words tavrenix ''
  list info modify
  $ complete_words tavrenix modify ''
  lun path
  $ complete_words tavrenix info -
  --id
  $ complete_words tavrenix Modify LUN --
  --id --algorithm --batchCount
  $ complete_words tavrenix --lun X modify path --
  --lun --id --enable --disable
  $ complete_words tavrenix modify lun --algorithm Least
  LeastIO LeastBytes
  $ complete_words tavrenix modify lun -b ''
  
  $ complete_words tavrenix list ''
  

Units, and the paths of the unit that was named:

  $ unit=600A0B8000112233445566778899AAB
  $ complete_words tavrenix info --id ''
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
  $ complete_words tavrenix modify lun -i ${unit}C
  600A0B8000112233445566778899AABC
  $ complete_words tavrenix modify path --lun ${unit}B --disable --id ''
  0101 0102 0103
  $ complete_words tavrenix modify path --id ''
  
  $ in_bash tavrenix info --id = $unit
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC

The simulation takes an image first, whose name may hold blanks:

  $ cp "$image" 'an image.json'
  $ complete_words tavrenix-lab an
  an image.json
  $ complete_words tavrenix-lab 'an image.json' modify path -l ${unit}C -i 02
  0201 0202 0203
  $ complete_words tavrenix-lab nothing.json info -i ''
  

An identifier that fills its column may have been cut, and is not offered:

  $ complete_words tavrenix-lab "$TESTDIR/../../samples/oddities.json" info -i AB
  

An ordinary user is offered no identifiers, and the tool is not even started:

  $ id() { echo 1000; }
  $ in_bash tavrenix info --id ''
  
  $ in_bash tavrenix ''
  list info modify
