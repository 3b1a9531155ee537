The installation of packages, with stand-ins for the system's commands. $HAVE lists what is installed, $OFFERED what
apt-get can install; each call of apt-get is noted in apt-calls.

  $ mkdir bin
  $ cat >bin/dpkg-query <<'END'
  > #!/bin/bash
  > grep -qx -- "${*: -1}" "$HAVE" && echo installed
  > END
  $ cat >bin/apt-get <<'END'
  > #!/bin/bash
  > echo "$*" >>"$CALLS"
  > while [[ $1 == -* ]]; do [[ $1 == -o ]] && shift; shift; done
  > [[ $1 == update ]] && { touch lists; exit; }
  > [[ -e lists ]] || { echo "E: no lists"; exit 100; }
  > for package in "${@:3}"; do
  >   grep -qx -- "$package" "$OFFERED" || { echo "E: Unable to locate package $package"; exit 100; }
  > done
  > printf '%s\n' "${@:3}" >>"$HAVE"
  > END
  $ chmod +x bin/*
  $ export PATH=$PWD/bin:$PATH HAVE=$PWD/have OFFERED=$PWD/offered CALLS=$PWD/apt-calls
  $ touch have offered apt-calls
  $ cat >install <<END
  > set -euo pipefail
  > source "$TESTDIR/../steps.sh"
  > source "$TESTDIR/../packages.sh"
  > sudo() { "\$@"; }
  > packages[toy]="one two g++"
  > steps 1
  > install_packages toy
  > END

What is missing and cannot be had is named, with the command to run by hand:

  $ printf 'one\n' >have
  $ printf 'two\n' >offered
  $ bash install
  [1/1] packages: installing two g++
  run: could not install: two g++
  E: no lists
  E: Unable to locate package g++
  Please run this by hand as the superuser, then start again:
    *apt-get update && *apt-get install -y --no-install-recommends two g++ (glob)
  [1]

Only what is missing is asked for, and the lists are fetched when the first try fails:

  $ rm lists apt-calls
  $ printf 'two\ng++\n' >offered
  $ bash install
  [1/1] packages: installing two g++
  $ grep -o -E '(update|install .*)$' apt-calls
  install --no-install-recommends two g++
  update
  install --no-install-recommends two g++

With everything there, apt-get is not called:

  $ rm apt-calls
  $ bash install
  [1/1] packages: all present
  $ test -e apt-calls
  [1]
