The verbs are listed by ./run alone, called from any folder, also through a link:

  $ run=$TESTDIR/../../run
  $ ln -s "$run" "a link"
  $ "./a link" | head -n 2
  usage: ./run VERB
    demo *build* (glob)
  $ "$run" help | cmp - <("$run")

Every verb that is listed has its function:

  $ for verb in $("$run" | sed -n 's/^  \([a-z-]*\) .*/\1/p'); do
  >   grep -q "^verb_${verb//-/_}()" "$run" || echo "no function: $verb"
  > done
  $ for step in $("$run" check help | sed 's/^  \([a-z]*\) .*/\1/'); do
  >   grep -q "^check_$step()" "$TESTDIR/../check.sh" || echo "no function: $step"
  > done

What is installed is hardened:

  $ sed -n '/^verb_install()/,/^}/p' "$run" | grep -o 'TAVRENIX_HARDEN=ON'
  TAVRENIX_HARDEN=ON

What it does not know is refused before anything is done:

  $ "$run" frobnicate
  run: unknown verb 'frobnicate'; ./run lists the verbs
  [2]
  $ "$run" check walls frobnicate 2>&1 >/dev/null
  run: unknown check 'frobnicate'
  [2]

A logged command shows the end of its log when it fails, and nothing when it succeeds:

  $ cat >logged <<END
  > set -euo pipefail
  > source "$TESTDIR/../steps.sh"
  > logged good echo quiet
  > logged bad sh -c 'echo why; exit 3'
  > echo not reached
  > END
  $ bash logged
  ---- the last lines of build/logs/bad.log ----
  why
  ----
  run: sh -c echo why; exit 3 ... failed with status 3; everything it said is in build/logs/bad.log
  [1]
