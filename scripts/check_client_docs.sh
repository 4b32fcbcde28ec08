#!/usr/bin/env bash
# check_client_docs.sh BUILD_DIRECTORY [--update]: runs every command that docs/client.md shows with its
# output, in order, against the built service under Wine, and compares. Times, bars and the sandbox's
# directory may differ. With --update the document gets the present outputs instead.
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
state_no_service() {
  wine_run "$box/tavrinctl.exe" shutdown >/dev/null 2>&1
  wait "$service" || true
  service=
}
# A port that Xray refuses, which ends it before it listens.
state_damaged_node() { sed -i 's/"port": 443/"port": 70000/' "$box/runtime/account.json"; }

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

# What a command line of the document prints, as a person sees it: in a directory that stays the same,
# also where JSON doubles its backslashes.
run_line() {
  local -a words
  local plain input shown='C:\Tavrin'
  plain=$(windows_path "$box")
  input=/dev/null
  [[ $1 != *'<password.txt' ]] || input=$box/password.txt
  eval "words=(${1%<password.txt})"
  (cd "$box" && wine_run "$box/tavrinctl.exe" "${words[@]:1}" 2>&1 <"$input" || true) | tr -d '\r' |
    sed -e "s|$(in_pattern "$plain")|$(in_pattern "$shown")|g" -e 's/[ ]*$//' \
      -e "s|$(in_pattern "${plain//\\/\\\\}")|$(in_pattern "${shown//\\/\\\\}")|g" \
      -e "s|http://127.0.0.1:$TAVRIN_TEST_PANEL_HTTP|https://panel.example|g"
}

normalise() {
  sed -E -e 's/[█▏▎▍▌▋▊▉◄]+//g' -e 's/[0-9]+( [0-9]{3})* ms/# ms/g' -e 's/[0-9]+\.[0-9]+ s/# s/g' \
    -e 's/up for .*/up for #/' -e 's/"(upSeconds|connectMilliseconds|milliseconds|step|total)": [0-9]+/"\1": #/' \
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
