#!/usr/bin/env bash
# in_lane.sh DIRECTORY COMMAND [ARGUMENT...]: runs a command in the first free lane, and waits for one
# where none is free. A lane is a Wine prefix (WINEPREFIX, a copy of DIRECTORY/warm) and a network
# namespace of its own, since the product's pipe name and port are the machine's. Where no namespace
# can be made there is one lane. A command has ten minutes from when it has its lane.
set -euo pipefail
export LC_ALL=C.UTF-8  # as in wine.sh
tests=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1"
directory=$(cd "$1" && pwd)
shift

isolate=(unshare --net --)
[ "$(id -u)" = 0 ] || isolate=(unshare --map-root-user --net --)
lanes=(0 1 2 3 4 5)
if ! "${isolate[@]}" ip link set lo up 2>/dev/null; then
  isolate=()
  lanes=(0)
fi

take_lane() {
  while :; do
    for lane in "${lanes[@]}"; do
      exec 8>"$directory/lane-$lane.lock"
      ! flock -n 8 || return 0
    done
    sleep 0.2
  done
}

make_prefix() {
  [ ! -e "$WINEPREFIX/made" ] || return 0
  "$tests/wine_prefix.sh" "$directory/warm"
  "$tests/copy_prefix.sh" "$directory/warm" "$WINEPREFIX"
}

end_session() {
  wineserver -k 2>/dev/null || true  # it has ended by itself when nothing was left
  wineserver -w
}

take_lane
export WINEPREFIX="$directory/lane-$lane"
make_prefix
trap end_session EXIT
limit=(timeout --kill-after=10 600)
if [ ${#isolate[@]} -gt 0 ]; then
  "${isolate[@]}" sh -c 'ip link set lo up && exec "$@"' lane "${limit[@]}" "$@" 8>&-
else
  "${limit[@]}" "$@" 8>&-
fi
