#!/bin/sh
# wine_prefix.sh PREFIX: makes a headless Wine prefix that says it is Windows 10, where none is yet.
set -eu
wine=$(dirname "$0")/wine.sh
export WINEPREFIX="$1"
mkdir -p "$WINEPREFIX"
(
  flock 9
  if [ ! -e "$WINEPREFIX/made" ]; then
    rm -rf "$WINEPREFIX/drive_c" "$WINEPREFIX"/*.reg
    "$wine" wineboot -i >"$WINEPREFIX/wineboot.log" 2>&1
    "$wine" winecfg -v win10 >>"$WINEPREFIX/wineboot.log" 2>&1
    # The service manager of the session that made the prefix can't start a service of ours.
    wineserver -w
    : >"$WINEPREFIX/made"
  fi
) 9>"$WINEPREFIX/lock"
