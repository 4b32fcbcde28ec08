#!/bin/sh
# run_in_wine.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program headless in a Wine prefix of
# its own, which is made when it is missing. The DLLs beside a program go before Wine's own.
set -eu
prefix=$1
shift
export WINEPREFIX="$prefix" DISPLAY= WINEDEBUG=-all WINEDLLOVERRIDES="iphlpapi=n,b"
mkdir -p "$prefix"
(
  flock 9
  [ -e "$prefix/system.reg" ] || wine wineboot -i >"$prefix/wineboot.log" 2>&1
) 9>"$prefix/lock"
exec wine "$@"
