#!/usr/bin/env bash
# check_client_screen.sh BUILD_DIRECTORY [PICTURE]: runs the client in a real terminal, captures the screen
# while a connect is under way and when it is over, and compares. Times differ and are left out. With
# PICTURE the last screen is kept there as text. Needs tmux.
set -euo pipefail
build=$(cd "$1" && pwd)
picture=${2:-}
# shellcheck source=scripts/sandbox.sh
. "$(dirname "$0")/sandbox.sh"
"$(dirname "$0")/install_packages.sh" tmux
export LANG=C.UTF-8
terminal="tmux -L tavrin-$$ -f /dev/null"
end_terminal() {
  $terminal kill-server 2>/dev/null || true
  end_sandbox
}
trap end_terminal EXIT

screen() { $terminal capture-pane -p | sed -e 's/[ ]*$//' -e '/^$/d'; }

# await TEXT: until it stands on the screen, for 30 seconds.
await() {
  for _ in $(seq 300); do
    ! screen | grep -qF -- "$1" || return 0
    sleep 0.1
  done
  echo "never on the screen: $1"
  screen
  return 1
}

# Times have any number of digits in their columns.
without_times() { sed -E -e 's/ +[0-9]+( [0-9]{3})* ms/ # ms/' -e 's/in [0-9.]+ s/in # s/' -e 's/[⠋⠙⠹⠸⠼⠴⠦⠧⠇⠏]/*/'; }

failed=0
# compare WHEN WANTED
compare() {
  local present
  present=$(screen | without_times)
  if [ "$present" != "$2" ]; then
    echo "$1 the screen is another one:"
    diff <(echo "$2") <(echo "$present") || true
    failed=1
  fi
}

steps='Connecting to Tokyo 01 (203.0.113.77:443)
  ✓ old tunnel stopped # ms
  ✓ stale helpers looked for # ms
  ✓ physical route found # ms   以太网 via 192.168.1.1
  ✓ panel pinned # ms'

lay_out
echo '{"xray":{"delayMs":3000}}' >"$box/machine/machine.json"
start_service
await_service
$terminal new-session -d -x 100 -y 30 "$launcher '$box/tavrinctl.exe' connect 'Tokyo 01'; sleep 60"
await "Xray being started"
compare "While Xray starts" "$steps
  * Xray being started …"
await "Connected in"
compare "At the end" "$steps
  ✓ Xray listening # ms
  ✓ adapter up # ms
  ✓ address, name server, IPv4 # ms
  ✓ routes installed # ms
  ✓ IPv6 blocked # ms
Connected in # s."
if screen | grep -q $'\x1b'; then
  echo "an escape character stands on the screen"
  failed=1
fi
[ -z "$picture" ] || $terminal capture-pane -e -p >"$picture"
wine_run "$box/tavrinctl.exe" shutdown >/dev/null
exit "$failed"
