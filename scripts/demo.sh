#!/usr/bin/env bash
# demo.sh BUILD_DIRECTORY: one connect and one disconnect of the built service, shown and checked.
set -euo pipefail
build=$(cd "$1" && pwd)
launcher=$(cd "$(dirname "$0")/.." && pwd)/tests/e2e/run_in_wine.sh
export WINEPREFIX="$build/wine"
box=$(mktemp -d)
failures=0
service=

wine_run() { "$launcher" "$@"; }
windows_path() { printf 'Z:%s' "${1//\//\\}"; }
title() { printf '\n== %s\n' "$*"; }

stop_service() {
  if [ -n "$service" ] && kill -0 "$service" 2>/dev/null; then
    kill "$service" || true
  fi
  rm -rf "$box"
}
trap stop_service EXIT

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

# ask WANTED_REPLY ARGUMENT...: one request through the control client.
ask() {
  local wanted=$1 exchange
  shift
  exchange=$(wine_run "$build/tavrin_control.exe" "$@" | tr -d '\r') || true
  printf '%s\n' "$exchange"
  expect "reply to $1" "reply   $wanted" "$(tail -n 1 <<<"$exchange")"
}

lay_out() {
  mkdir -p "$box/runtime/xray" "$box/runtime/tun2socks" "$box/machine"
  cp "$build/TavrinService.exe" "$build/standins/iphlpapi.dll" "$build/standins/netsh.exe" "$box/"
  cp "$build/standins/xray.exe" "$box/runtime/xray/"
  cp "$build/standins/tun2socks-windows-amd64.exe" "$box/runtime/tun2socks/"
  echo "no library, the stand-in needs none" >"$box/runtime/tun2socks/wintun.dll"
  cat >"$box/runtime/account.json" <<'JSON'
{
  "email": "someone@mail.example",
  "password": "secret",
  "expireAt": "2999-12-31",
  "nodeName": "Tokyo 01",
  "address": "203.0.113.77",
  "port": 443,
  "uuid": "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab",
  "sni": "www.site.example",
  "publicKey": "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA",
  "shortId": "0123abcd"
}
JSON
  echo '{"email":"someone@mail.example","expireAt":"2999-12-31"}' >"$box/runtime/session.json"
  TAVRIN_TEST_MACHINE=$(windows_path "$box/machine")
  export TAVRIN_TEST_MACHINE
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
wine_run "$box/TavrinService.exe" --console --runtime "$(windows_path "$box/runtime")" \
  >"$box/console.txt" 2>&1 </dev/null &
service=$!

title "Is a tunnel up?"
ask "$down" status

title "Connect to the node Tokyo 01"
ask "$up" connect "Tokyo 01"

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

title "Disconnect"
ask "$down" disconnect

title "The machine after: IPv4 routes and IPv6"
after=$(show routes; show ipv6)
printf '%s\n' "$after"
expect "the network is as it was before" "$before" "$after"

title "Shut the service down"
ask "$down" shutdown
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
