#!/usr/bin/env bash
# check_client_docs.sh BUILD_DIRECTORY [--update]: runs every command that docs/client.md shows with its
# output, in order, against the built service under Wine, and compares, with the exit code, which stands
# below an output as `[exit code N]` where it is not 0. Times, bars and the sandbox's directory may
# differ. With --update the document gets the present outputs instead.
# A comment `<!-- state: NAME -->` in the document calls the function state_NAME below. The account's
# commands ask the test panel: run this by tests/e2e/run_with_panel.sh.
set -euo pipefail
build=$(cd "$1" && pwd)
document=$(cd "$(dirname "$0")/.." && pwd)/docs/client.md
update=${2:-}
# shellcheck source=scripts/sandbox.sh
. "$(dirname "$0")/sandbox.sh"

state_service() {
  start_service
  await_service
}
# It was shut down, or is now.
state_service_gone() {
  wine_run "$box/tavrinctl.exe" shutdown >/dev/null 2>&1 || true
  wait "$service" || true
  service=
}
# set_node ADDRESS PORT
set_node() {
  sed -i -e "s/\"address\": \".*\"/\"address\": \"$1\"/" -e "s/\"port\": [0-9]*/\"port\": $2/" "$box/runtime/account.json"
}
state_account() { set_node 203.0.113.77 443; }
# A port that Xray refuses, which ends it before it listens.
state_damaged_node() { set_node 203.0.113.77 70000; }
# What listens there is the stand-in of Xray itself, while a tunnel is up.
state_near_node() { set_node 127.0.0.1 17593; }

# A user's password, and a panel that tests/panel/admin.h describes.
password='p+ss &wörd 密'
tell_panel() {
  exec 3<>"/dev/tcp/127.0.0.1/$TAVRIN_TEST_PANEL_ADMIN"
  printf 'POST %s HTTP/1.0\r\nContent-Length: %d\r\n\r\n%s' "$1" "${#2}" "$2" >&3
  grep -q '200 OK' <&3
  exec 3>&-
}
state_panel() {
  local address="http://127.0.0.1:$TAVRIN_TEST_PANEL_HTTP"
  printf '{"apiBase":"%s","deviceApi":"%s/device"}\n' "$address" "$address" >"$box/runtime/panel.json"
}
state_panel_fails() { tell_panel /behave '{"path":"/api/v1/user/plan/fetch","do":"html","status":500}'; }
state_local_account() {
  rm "$box/runtime/panel.json" "$box/runtime/device.id"
  write_session
}

# Backslashes as sed wants them.
in_pattern() { printf '%s' "${1//\\/\\\\}"; }

# await_line TEXT: until the watch has printed it, for 30 seconds.
await_line() {
  for _ in $(seq 300); do
    ! grep -q "^$1" "$box/watch.txt" || return 0
    sleep 0.1
  done
  return 1
}

# A watch until it has seen somebody disconnect. Whether it looks in the middle of that is chance.
run_watch() {
  wine_run "$box/tavrinctl.exe" status --watch >"$box/watch.txt" 2>&1 </dev/null &
  local watch=$!
  await_line 'Connected to'
  wine_run "$box/tavrinctl.exe" disconnect >/dev/null
  await_line 'Not connected'
  kill "$watch"
  wait "$watch" 2>/dev/null || true
  grep -v '^The service is busy' "$box/watch.txt"
}

# run_client WORD...: what it prints, and its exit code. It reads the input of this.
run_client() {
  local code=0
  (cd "$box" && wine_run "$box/tavrinctl.exe" "$@" 2>&1) || code=$?
  [ "$code" = 0 ] || echo "[exit code $code]"
}

# What a command line of the document prints, as a person sees it: in a directory that stays the same,
# also where JSON doubles its backslashes.
run_line() {
  local -a words
  local plain input=/dev/null shown='C:\Tavrin' run=run_client
  plain=$(windows_path "$box")
  [[ $1 != *'<password.txt' ]] || input=$box/password.txt
  eval "words=(${1%<password.txt})"
  [[ $1 != *--watch* ]] || run=run_watch
  $run "${words[@]:1}" <"$input" | tr -d '\r' |
    sed -e "s|$(in_pattern "$plain")|$(in_pattern "$shown")|g" -e 's/[ ]*$//' \
      -e "s|$(in_pattern "${plain//\\/\\\\}")|$(in_pattern "${shown//\\/\\\\}")|g" \
      -e "s|http://127.0.0.1:$TAVRIN_TEST_PANEL_HTTP|https://panel.example|g"
}

normalise() {
  sed -E -e 's/[█▏▎▍▌▋▊▉◄]+//g' -e 's/[0-9]+( [0-9]{3})* ms/# ms/g' -e 's/[0-9]+\.[0-9]+ s/# s/g' \
    -e 's/up for .*/up for #/' -e 's/"(upSeconds|connectMilliseconds|milliseconds|step|total|latency)": [0-9]+/"\1": #/' \
    -e 's/ +/ /g' -e 's/ $//'
}

lay_out
printf '%s\n' "$password" >"$box/password.txt"
failed=0
checked=0
result=$(mktemp)
command=
block=
while IFS= read -r line || [ -n "$line" ]; do
  if [ -n "$command" ]; then
    if [ "$line" != '```' ]; then
      block+=$line$'\n'
      continue
    fi
    present=$(run_line "$command")
    checked=$((checked + 1))
    if [ "$(normalise <<<"$present")" != "$(normalise <<<"${block%$'\n'}")" ] && [ "$update" != --update ]; then
      echo "docs/client.md shows another output of: $command"
      diff <(normalise <<<"${block%$'\n'}") <(normalise <<<"$present") || true
      failed=1
    fi
    printf '%s\n```\n' "$present" >>"$result"
    command=
    block=
    continue
  fi
  printf '%s\n' "$line" >>"$result"
  case "$line" in
    '> tavrinctl'*) command=${line#> } ;;
    '<!-- state: '*) state=${line#<!-- state: } && "state_${state% -->}" ;;
  esac
done <"$document"
[ "$update" != --update ] || cp "$result" "$document"
rm -f "$result"
[ "$checked" -gt 0 ] || { echo "docs/client.md shows no command" && exit 1; }
echo "$checked commands of docs/client.md"
exit "$failed"
