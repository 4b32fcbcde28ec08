#!/bin/sh
# run_in_wine.sh PROGRAM [ARGUMENT...]: runs a Windows program headless in the prefix $WINEPREFIX, which
# is made when it is missing. The DLLs beside a program go before Wine's own.
set -eu
export LC_ALL=C.UTF-8  # as in wine_prefix.sh
"$(dirname "$0")/wine_prefix.sh" "${WINEPREFIX:?names the Wine prefix}"
export DISPLAY= WINEDEBUG=-all WINEDLLOVERRIDES="iphlpapi=n,b"
exec wine "$@"
