An installation that is moved afterwards: no file in it has the old path.

  $ source "$TESTDIR/../../tools/steps.sh" && source "$TESTDIR/../../tools/install.sh" && tell_loader() { :; }
  $ mkdir -p first/share/man && touch first/share/man/theirs
  $ install_build "$BUILD" "$PWD/first" && mv first prefix && grep -rlF "$PWD" prefix
  [1]
  $ examples=$PWD/prefix/share/doc/tavrenix/examples samples=$PWD/prefix/share/tavrenix/samples
  $ prefix/sbin/tavrenix | sed -n 1p && prefix/bin/tavrenix-lab "$samples/small.json" list | grep -c 'Least\|Round'
  tavrenix
  2
  $ prefix/bin/tavrenix-lab-monitor "$samples/degraded.json" check -i finance | cut -d ' ' -f 1,2
  TAVRENIX OK
  $ prefix/bin/tavrenix-lab-maintain "$samples/degraded.json" plan --path sdf | tail -n 1
  Nothing was changed.
  $ on_this_machine() { LD_LIBRARY_PATH=$PWD/prefix/lib "$@"; }
  $ on_this_machine prefix/sbin/tavrenix-monitor json | grep backing
      "backing": "linux",
  $ on_lab() { LD_LIBRARY_PATH=$PWD/prefix/lib/tavrenix-lab TAVRENIX_LAB_IMAGE=$samples/small.json "$@"; }

Programs in C, built with pkg-config: the example of the manual page, and the one that is installed with the library:

  $ export PKG_CONFIG_PATH=$PWD/prefix/lib/pkgconfig
  $ sed -n '/^#include <stdio.h>/,/^\.Ed/{/^\.Ed/!p}' prefix/share/man/man3/libtavrenix.3 >units.c
  $ "$CC" -std=c11 -Wall -Wextra -Werror units.c -o units $(pkg-config --cflags --libs tavrenix)
  $ "$CC" -Wall -Wextra -Werror "$examples/watch.c" -o watch $(pkg-config --cflags --libs tavrenix)
  $ on_this_machine ./units >found && on_lab ./units | sort
  600A0B8000112233445566778899AABB
  600A0B8000112233445566778899AABC
  $ sed -n '/^\$ tavrenix-lab-generate/,/^\.Ed/{/^\.Ed/!p}' prefix/share/man/man3/libtavrenix.3 >session
  $ PATH=$PWD/prefix/bin:$PATH bash -e <(sed -n 's/^\$ //p' session) | diff - <(grep -v '^\$' session)

A program in C++, built with find_package, which makes a block of a lambda:

  $ mkdir client && printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(client CXX)' \
  >   'find_package(tavrenix 0.1 REQUIRED)' 'set(CMAKE_CXX_STANDARD 20)' 'add_executable(client client.cpp)' \
  >   'target_link_libraries(client PRIVATE tavrenix::tavrenix)' >client/CMakeLists.txt
  $ cat >client/client.cpp <<'END'
  > #include <tavrenix/block.hpp>
  > #include <tavrenix/mpio.h>
  > auto block = tavrenix::makeBlock<MPIONotificationBlock>([](ObStringRef, ObTypeRef, void*) {});
  > int main() { return block.invoke == nullptr ? 0 : int(ObArrayGetCount(MPIOCopyLogicalUnits())); }
  > END
  $ cmake -S client -B built -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$PWD/prefix" -DCMAKE_SKIP_RPATH=ON \
  >   >log && cmake --build built >>log || cat log
  $ on_lab built/client
  [2]

A script in Python that uses ctypes:

  $ on_lab "$examples/list_units.py" | sed -n 1,2p
  600A0B8000112233445566778899AABB Finance: sent 2097152, received 16781312, commands 4609
    0101 Active Optimized: sent 1048576, received 8388608, commands 2304

The command is position-independent, and holds all its libraries and the loader. The library stays loaded:

  $ readelf -hld prefix/sbin/tavrenix prefix/lib/libtavrenix.so | grep -o 'DYN\|INTERP\|NODELETE' | uniq
  DYN
  NODELETE

Uninstalling leaves the files of other programs:

  $ uninstall_from "$PWD/prefix" && find prefix
  prefix
  prefix/share
  prefix/share/man
  prefix/share/man/theirs
  $ (uninstall_from "$PWD/prefix")
  run: nothing to remove: */share/tavrenix/installed, which ./run install writes, is not there (glob)
  [1]
