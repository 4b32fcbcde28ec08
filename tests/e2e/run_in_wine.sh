#!/bin/sh
# run_in_wine.sh PROGRAM [ARGUMENT...]: runs a Windows program headless in the prefix $WINEPREFIX, which
# is made when it is missing. The DLLs beside a program go before Wine's own.
set -eu
tests=$(dirname "$0")
"$tests/wine_prefix.sh" "${WINEPREFIX:?names the Wine prefix}"
export WINEDLLOVERRIDES="iphlpapi=n,b"
exec "$tests/wine.sh" "$@"
