#!/usr/bin/env bash
# Includes in src/ stay in their room or run down. The rooms and their order are the list in
# docs/architecture.md, between the lines ```rooms and ```: one floor a line, the highest first.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0
complain() {
  echo "$1"
  failed=1
}

declare -A floor
level=0
while read -r rooms; do
  level=$((level + 1))
  for room in $rooms; do
    floor[$room]=$level
    [ -d "src/$room" ] || complain "docs/architecture.md lists the room $room, which src/ does not have"
  done
done < <(sed -n '/^```rooms$/,/^```$/p' docs/architecture.md | sed '1d;$d')
[ "$level" -gt 0 ] || complain "docs/architecture.md has no list of the rooms"

for directory in src/*/; do
  room=$(basename "$directory")
  [ -n "${floor[$room]:-}" ] || complain "docs/architecture.md does not list the room $room"
done
while IFS=: read -r file include; do
  room=${file#src/} room=${room%%/*}
  included=${include#src/} included=${included%%/*}
  if [ "$room" != "$included" ] && [ "${floor[$included]:-0}" -le "${floor[$room]:-0}" ]; then
    complain "$file includes src/$included/, which is not below src/$room/"
  fi
done < <(grep -roE --include='*.h' --include='*.cpp' '^#include "src/[a-z_/0-9]+\.h"' src |
  sed -E 's/#include "(.*)"/\1/')
# The client stands above: src/ knows nothing of it, and it leaves the entry point's room and the
# parts for tests alone.
while IFS=: read -r file include; do
  complain "$file includes $include"
done < <(
  grep -roE --include='*.h' --include='*.cpp' '"client/[a-z_/0-9]+\.h"' src
  grep -roE --include='*.h' --include='*.cpp' '"src/(host/[a-z_/0-9]+|[a-z_/0-9]+_internal)\.h"|"tests/[a-z_/0-9]+\.h"' client
)
exit "$failed"
