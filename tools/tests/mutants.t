Three changes in a sample of one function: two that its test notices, and one that nobody could tell. Of the reasons that
are given, one is for a change that is noticed, and one for a line that is not there:

  $ "$TESTDIR/../mutants/mutants" --self-test
  
  folder           changes  killed  of 100
  .                      3       2    66.7
  together               3       2    66.7
  
  Survive, and why: A number that equals the least is the least:
    sample.cpp:3: clamp
        was if (value < least) value = least;
        now if (value <= least) value = least;
  
  Listed there, but killed now:
    sample.cpp: clamp: if (value < least) value = least; => if (value < least) {}
  
  Listed there, but no such change now:
    sample.cpp: clamp: this line => has gone
  
  2 of 3 changes were noticed by the tests, 0 survivors have no reason
