#!/usr/bin/env bash
# memory.sh --out FILE [--quick] [--rounds N]: the private memory of the service, and that of an empty
# executable that waits, in turn, as the kernel counts it for the process under Wine: idle, at the peak of
# a connect, and with many nodes beside few of them. A third subject is the empty executable with what Wine
# keeps of any program that has ended a thread. To be run in a lane, with the test panel.
set -euo pipefail
root=$(cd "$(dirname "$0")/../../.." && pwd)
build=$root/build/windows
# shellcheck source=scripts/sandbox.sh
. "$root/scripts/sandbox.sh"

few=10
many=10000
rounds=9
while [ $# -gt 0 ]; do
  case $1 in
    --out) out=$2; shift ;;
    --quick) rounds=3 ;;
    --rounds) rounds=$2; shift ;;
    *) echo "usage: memory.sh --out FILE [--quick] [--rounds N]" >&2; exit 2 ;;
  esac
  shift
done

# Sets `private` to the bytes that no other process has; 0 for one that is gone.
look_at() {
  local key value rest
  private=0
  while read -r key value rest; do
    [[ $key != Private_* ]] || private=$((private + value * 1024))
  done <"/proc/$1/smaps_rollup" || true
}

# Sets `private` when it has stayed the same for a second.
settle() {
  local last=-1 same=0
  for _ in $(seq 200); do
    look_at "$1"
    if [ "$private" = "$last" ]; then same=$((same + 1)); else same=0; fi
    [ "$same" -lt 10 ] || return 0
    last=$private
    sleep 0.1
  done
}

# start PROGRAM ARGUMENT...: the launcher becomes the program, so `started` is its process.
start() {
  "$launcher" "$@" >/dev/null 2>&1 </dev/null 8>&- &
  started=$!
}

request() { wine_run "$box/tavrinctl.exe" request "{\"op\":\"$1\"}" >/dev/null; }

start_daemon() {
  start "$box/TavrinService.exe" --daemon --runtime "$(windows_path "$box/runtime")"
  service=$started
  await_service
}

end_daemon() {
  request shutdown
  wait "$service" || true
  service=
}

declare -A samples
add() { samples[$1]+="${samples[$1]+,}$private"; }

write() { # write FIGURE SUBJECT SIZE KEY
  printf '{"figure":"%s","subject":"%s","size":%s,"unit":"bytes","samples":[%s]}\n' \
    "$1" "$2" "$3" "${samples[$4]}" >>"$out"
}

measure_waiting() { # measure_waiting KEY [ARGUMENT]
  start "$box/bench_waiting.exe" "${@:2}"
  settle "$started"
  add "$1"
  kill "$started"
  wait "$started" 2>/dev/null || true
}

# The highest figure that was seen while the connect ran.
measure_connect() {
  local peak=0
  request connect &
  local connecting=$!
  while kill -0 "$connecting" 2>/dev/null; do
    look_at "$service"
    [ "$private" -le "$peak" ] || peak=$private
  done
  wait "$connecting"
  private=$peak
  add peak
  request disconnect
}

measure_service() {
  start_daemon
  settle "$service"
  add idle
  measure_connect
  end_daemon
}

panel() { curl -sS --fail-with-body -X "$1" "http://127.0.0.1:$TAVRIN_TEST_PANEL_ADMIN/$2" "${@:3}"; }

sign_in_at_panel() {
  rm "$box/runtime/account.json"
  echo "{\"apiBase\":\"http://127.0.0.1:$TAVRIN_TEST_PANEL_HTTP\"}" >"$box/runtime/panel.json"
  panel GET state | jq -c '.users[0] | {email: .email, auth_data: .sessions[0]}' >"$box/runtime/session.json"
}

# The account with so many nodes, which the service fetches at its start and keeps.
measure_nodes() {
  panel POST requests/forget -d '{}' >/dev/null
  panel GET state | jq -c --argjson count "$1" \
    '.nodes[0] as $node | {nodes: [range($count) | $node + {id: (. + 1), name: "node \(.)"}]}' |
    panel POST state -H 'Content-Type: application/json' --data-binary @- >/dev/null
  start_daemon
  until [ "$(panel GET requests | jq length)" -ge 2 ]; do sleep 0.1; done
  settle "$service"
  add "nodes-$1"
  end_daemon
}

# Wine's server stays until the lane ends it. One that ends by itself, seconds behind the last program,
# takes a program with it that is just starting.
wineserver -p </dev/null >/dev/null 2>&1
lay_out
cp "$build/bench/bench_waiting.exe" "$box/"
for _ in $(seq "$rounds"); do
  measure_waiting empty
  measure_waiting threaded thread
  measure_service
done
sign_in_at_panel
for _ in $(seq "$rounds"); do
  measure_nodes "$few"
  measure_nodes "$many"
done
write memory-idle service 0 idle
write memory-idle empty 0 empty
write memory-idle threaded 0 threaded
write memory-peak service 0 peak
write memory-peak empty 0 empty
write memory-peak threaded 0 threaded
write memory-nodes service "$few" "nodes-$few"
write memory-nodes service "$many" "nodes-$many"
