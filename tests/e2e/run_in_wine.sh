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
  if [ ! -e "$prefix/system.reg" ]; then
    wine wineboot -i >"$prefix/wineboot.log" 2>&1
    # The service manager of the session that made the prefix can't start a service of ours.
    wineserver -w
  fi
) 9>"$prefix/lock"
exec wine "$@"
