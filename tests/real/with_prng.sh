#!/bin/sh
# with_prng.sh COMMAND [ARGUMENT...]: runs a command in a lane whose Wine has the bcryptprimitives.dll
# that programs of Go load, from the system directory and from nowhere else.
set -eu
cp "${TAVRIN_REAL:?names the built programs}/bcryptprimitives.dll" "$WINEPREFIX/drive_c/windows/system32/"
exec "$@"
