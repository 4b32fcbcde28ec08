#!/bin/sh
# copy_prefix.sh WARM PREFIX: a Wine prefix like another one. Both share the Windows directory by hard
# links; tests write elsewhere.
set -eu
rm -rf "$2"
cp -al "$1" "$2"
rm -f "$2"/lock "$2"/made "$2"/*.reg
cp "$1"/*.reg "$2"
: >"$2/made"
