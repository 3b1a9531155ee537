Both shells complete from one file.

  $ . "$TESTDIR/setup.sh"
  $ folder=$TESTDIR/../../completions
  $ source "$folder/tavrenix-monitor" && source "$folder/tavrenix-maintain"
  $ cat >zsh.zsh <<'END'
  > file=$1 service=$2 words=("${@:2}") CURRENT=$(($# - 1))
  > compadd() { echo ${(M)${(P)2}:#$words[CURRENT]*} }
  > _files() { echo $words[CURRENT]*(N) }
  > source $file
  > END
  $ complete_words() {
  >   COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  >   _tavrenix_${1##*-}_bash "$1"
  >   echo "${COMPREPLY[@]}" >bash.out
  >   zsh -f zsh.zsh "$folder/tavrenix-${1##*-}" "$@" >zsh.out
  >   diff bash.out zsh.out && cat bash.out
  > }
  $ complete_words tavrenix-monitor ''
  status check json metrics picture top watch baseline --help --version
  $ complete_words tavrenix-monitor check --w
  --warning
  $ complete_words tavrenix-monitor baseline ''
  record show diff
  $ complete_words tavrenix-monitor picture --format ''
  text svg dot html
  $ complete_words tavrenix-monitor top -s s
  skew
  $ cp "$samples/degraded.json" try.json
  $ complete_words tavrenix-lab-monitor tr
  try.json
  $ complete_words tavrenix-lab-monitor try.json status --unit 600A0B8000112233445566778899AAB
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
  $ complete_words tavrenix-lab-monitor try.json check --baseline t
  try.json
  $ complete_words tavrenix-maintain ''
  plan drain status undo restore --help --version
  $ complete_words tavrenix-lab-maintain try.json restore --w
  --wait
  $ complete_words tavrenix-lab-maintain try.json drain --host-port ''
  2100001b32000001 2100001b32000002
  $ complete_words tavrenix-lab-maintain try.json plan --accept 600A0B8000112233445566778899AAB
  600A0B8000112233445566778899AABB 600A0B8000112233445566778899AABC
