# For the scripts of this directory, to be sourced: where the built programs are, and how a stage says
# that this machine can't do it.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
real=${TAVRIN_REAL_BUILD:-$root/build/real}  # another one in check_skips.sh
mkdir -p "$real"

# skip REASON: what ./test.sh reads as the last line.
skip() {
  echo "skipped: $1"
  exit 0
}

# need_core: ends as skipped when the programs were not built.
need_core() {
  [ ! -e "$real/skipped" ] || skip "$(cat "$real/skipped")"
}

# need_network: the tests put public addresses on the loopback of a network namespace.
need_network() {
  isolate=(unshare --net --)
  [ "$(id -u)" = 0 ] || isolate=(unshare --map-root-user --net --)
  "${isolate[@]}" ip link set lo up 2>/dev/null || skip "no network namespace can be made here"
}
