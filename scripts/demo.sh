#!/usr/bin/env bash
# demo.sh BUILD_DIRECTORY: one connect and one disconnect of the built service, shown and checked.
set -euo pipefail
build=$(cd "$1" && pwd)
failures=0
# shellcheck source=scripts/sandbox.sh
. "$(dirname "$0")/sandbox.sh"

title() { printf '\n== %s\n' "$*"; }

# expect WHAT WANTED GOT
expect() {
  if [ "$2" = "$3" ]; then
    printf '   as expected: %s\n' "$1"
  else
    printf '   NOT AS EXPECTED: %s\n   wanted: %s\n   got:    %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
  fi
}

show() { wine_run "$build/standins/show_machine.exe" "$1" | tr -d '\r'; }

# ctl ARGUMENT...: the client; what it prints is shown, and stays in `said`.
ctl() {
  printf '> tavrinctl'
  printf ' %q' "$@"
  printf '\n'
  ctl_code=0
  wine_run "$box/tavrinctl.exe" "$@" 2>&1 | tee "$box/said.txt" || ctl_code=${PIPESTATUS[0]}
  said=$(tr -d '\r' <"$box/said.txt")
}

# ask WANTED_REPLY REQUEST: one raw exchange.
ask() {
  ctl request "$2"
  expect "reply to $2" "$1" "$said"
}

# The live connect. On a terminal the client itself draws there, so that its lines move.
live_connect() {
  if [ -t 1 ]; then
    ctl_code=0
    wine_run "$box/tavrinctl.exe" connect "$1" || ctl_code=$?
  else
    ctl connect "$1"
  fi
  expect "the client's exit code" 0 "$ctl_code"
}

wanted_ipv6_commands() {
  cat <<'TXT'
netsh interface ipv6 set interface "以太网" routerdiscovery=disabled store=active
netsh interface ipv6 delete route ::/0 interface="以太网"
netsh interface ipv6 set interface "tavrin" admin=disabled store=active
netsh interface ipv6 delete route ::/1 interface="tavrin"
netsh interface ipv6 delete route 8000::/1 interface="tavrin"
TXT
}

lay_out
up='{"ok":true,"running":true,"error":""}'
down='{"ok":true,"running":false,"error":""}'

title "The machine before: IPv4 routes and IPv6"
before=$(show routes; show ipv6)
printf '%s\n' "$before"

title "TavrinService.exe --console --runtime <dir>, as it ships"
start_service

title "Is a tunnel up?"
ask "$down" '{"op":"status"}'

title "Connect to the node Tokyo 01"
live_connect "Tokyo 01"
ask "$up" '{"op":"status"}'
ctl status

title "The machine while the tunnel is up: IPv4 routes and IPv6"
during=$(show routes)
printf '%s\n' "$during"
show ipv6
expect "both split routes lead into the tunnel" 2 \
  "$(grep -cE '^(0\.0\.0\.0|128\.0\.0\.0)/1 .* on tavrin$' <<<"$during" || true)"
expect "the node stays on the physical interface" 1 \
  "$(grep -cE '^203\.0\.113\.77/32 .* on 以太网$' <<<"$during" || true)"

title "The commands of the IPv6 block"
commands=$(show calls | grep -oE 'netsh interface ipv6 .*' || true)
printf '%s\n' "$commands"
expect "the five commands, in their order" "$(wanted_ipv6_commands)" "$commands"

title "The connect trace (connect-timing.log; the BOM and carriage returns are left out here)"
trace=$(sed $'s/^\xef\xbb\xbf//; s/\r$//' "$box/connect-timing.log")
printf '%s\n' "$trace"
expect "the last step is the IPv6 block" "ipv6 leak blocked" \
  "$(tail -n 1 <<<"$trace" | sed -E 's/ +\+.*//')"

title "The same as a waterfall"
ctl trace

title "Disconnect"
ctl disconnect
ask "$down" '{"op":"status"}'

title "The machine after: IPv4 routes and IPv6"
after=$(show routes; show ipv6)
printf '%s\n' "$after"
expect "the network is as it was before" "$before" "$after"

title "Shut the service down"
ctl shutdown
exit_code=0
wait "$service" || exit_code=$?
service=
expect "the service's exit code" 0 "$exit_code"

title "What the service printed"
tr -d '\r' <"$box/console.txt"

if [ "$failures" -gt 0 ]; then
  printf '\n%s of the checks above failed.\n' "$failures"
  exit 1
fi
printf '\nEverything was as expected.\n'
