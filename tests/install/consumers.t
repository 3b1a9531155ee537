An installed copy in an empty prefix, moved afterwards: nothing in it may know where it was.

  $ cmake --install "$BUILD" --prefix "$PWD/first" >/dev/null && mv first prefix
  $ (cd prefix && find bin sbin lib include share -path share/doc -prune -o ! -type d -print | sort)
  bin/tavrenix-lab
  bin/tavrenix-lab-generate
  bin/tavrenix-lab-watch
  include/tavrenix/block.hpp
  include/tavrenix/mpio.h
  include/tavrenix/ob.h
  lib/cmake/tavrenix/tavrenix-config-*.cmake (glob)
  lib/cmake/tavrenix/tavrenix-config-version.cmake
  lib/cmake/tavrenix/tavrenix-config.cmake
  lib/libtavrenix.so
  lib/libtavrenix.so.0
  lib/libtavrenix.so.0.* (glob)
  lib/pkgconfig/tavrenix.pc
  sbin/tavrenix
  share/bash-completion/completions/tavrenix
  share/bash-completion/completions/tavrenix-lab
  share/man/man3/libtavrenix.3
  share/man/man8/tavrenix-lab-generate.8
  share/man/man8/tavrenix-lab-watch.8
  share/man/man8/tavrenix-lab.8
  share/man/man8/tavrenix.8
  share/tavrenix/samples/README.md
  share/tavrenix/samples/oddities.json
  share/tavrenix/samples/small.json
  share/zsh/site-functions/_tavrenix
  share/zsh/site-functions/_tavrenix-lab
  $ examples=$PWD/prefix/share/doc/tavrenix/examples samples=$PWD/prefix/share/tavrenix/samples
  $ grep -rlF "$PWD" prefix
  [1]

The programs run from there:

  $ prefix/sbin/tavrenix | head -n 1
  tavrenix
  $ prefix/bin/tavrenix-lab "$samples/small.json" list | awk '{ print $2 }'
  Vendor
  Finance
  Archive

  $ on_this_machine() { LD_LIBRARY_PATH=$PWD/prefix/lib "$@"; }
  $ on_lab() { LD_LIBRARY_PATH=$ON_LAB TAVRENIX_TEST_IMAGE=$samples/small.json "$@"; }

Programs in C by pkg-config: the example of the manual page, and the one that comes with the library:

  $ export PKG_CONFIG_PATH=$PWD/prefix/lib/pkgconfig
  $ sed -n '/^#include <stdio.h>/,/^\.Ed/{/^\.Ed/!p}' prefix/share/man/man3/libtavrenix.3 >units.c
  $ "$CC" -std=c11 -Wall -Wextra -Werror units.c -o units $(pkg-config --cflags --libs tavrenix)
  $ "$CC" -Wall -Wextra -Werror "$examples/watch.c" -o watch $(pkg-config --cflags --libs tavrenix)
  $ on_this_machine ./units >found
  $ on_lab ./units | sort
  600A0B8000112233445566778899AABB
  600A0B8000112233445566778899AABC

A program in C++ by find_package:

  $ cmake -S "$TESTDIR/consumer" -B consumer -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$PWD/prefix" \
  >   -DCMAKE_SKIP_RPATH=ON -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >log 2>&1 || cat log
  $ cmake --build consumer >log 2>&1 || cat log
  $ on_this_machine consumer/consumer
  \d+ units, \d+ disabled paths (re)
  $ on_lab consumer/consumer
  2 units, 1 disabled paths

A script in Python by ctypes:

  $ on_this_machine "$examples/list_units.py" | grep -v ': sent .*, received .*, commands '
  [1]
  $ on_lab "$examples/list_units.py"
  600A0B8000112233445566778899AABB Finance: sent 2097152, received 16781312, commands 4609
    0101 Active Optimized: sent 1048576, received 8388608, commands 2304
    0102 Active Optimized: sent 1048576, received 8388608, commands 2304
    0103 Active Non-Optimized: sent 0, received 4096, commands 1
  600A0B8000112233445566778899AABC Archive: sent 131072, received 262144, commands 96
    0201 Active Optimized: sent 65536, received 131072, commands 48
    0202 Standby: sent 65536, received 131072, commands 48
    0203 Active Optimized: sent 0, received 0, commands 0
