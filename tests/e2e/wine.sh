#!/bin/sh
# wine.sh PROGRAM [ARGUMENT...]: starts Wine headless, as every test does, in the prefix $WINEPREFIX.
set -eu
# Wine writes no file name outside ASCII in the C locale, which a bare machine has.
export LC_ALL=C.UTF-8
export DISPLAY= WINEDEBUG=-all
# Where Linux scatters the parts of a program over the addresses, it now and then (once in some 3,000
# starts) puts the heap where Wine wants the page that all its processes share. CreateProcess then fails
# with 1359. A container may forbid to turn that off.
if setarch -R true 2>/dev/null; then
  exec setarch -R wine "$@"
fi
exec wine "$@"
