#!/usr/bin/env bash
# check_client_docs.sh BUILD_DIRECTORY [--update]: runs every command that docs/client.md shows with its
# output, in order, against the built service under Wine, and compares, with the exit code, which stands
# below an output as `[exit code N]` where it is not 0. Times, bars and the sandbox's directory may
# differ. With --update the document gets the present outputs instead.
# A comment `<!-- state: NAME -->` in the document calls the function state_NAME below.
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
# A port that Xray refuses, which ends it before it listens.
state_damaged_node() {
  sed -i -e 's/"address": ".*"/"address": "203.0.113.77"/' -e 's/"port": [0-9]*/"port": 70000/' "$box/runtime/account.json"
}
# What listens there is the stand-in of Xray itself, once a tunnel is up.
state_near_node() {
  sed -i -e 's/"port": [0-9]*/"port": 443/' "$box/runtime/account.json"
  start_service
  await_service
  wine_run "$box/tavrinctl.exe" connect --quiet
  sed -i -e 's/"address": ".*"/"address": "127.0.0.1"/' -e 's/"port": [0-9]*/"port": 17593/' "$box/runtime/account.json"
}

# Backslashes as sed wants them.
in_pattern() { printf '%s' "${1//\\/\\\\}"; }

# await_line N: until the watch has printed so many lines, for 30 seconds.
await_line() {
  for _ in $(seq 300); do
    [ "$(wc -l <"$box/watch.txt")" -lt "$1" ] || return 0
    sleep 0.1
  done
  return 1
}

# A watch until it has seen somebody disconnect.
run_watch() {
  wine_run "$box/tavrinctl.exe" status --watch >"$box/watch.txt" 2>&1 </dev/null &
  local watch=$!
  await_line 1
  wine_run "$box/tavrinctl.exe" disconnect >/dev/null
  await_line 2
  kill "$watch"
  wait "$watch" 2>/dev/null || true
  cat "$box/watch.txt"
}

# run_client WORD...: what it prints, and its exit code.
run_client() {
  local code=0
  (cd "$box" && wine_run "$box/tavrinctl.exe" "$@" 2>&1 </dev/null) || code=$?
  [ "$code" = 0 ] || echo "[exit code $code]"
}

# What a command line of the document prints, as a person sees it: in a directory that stays the same,
# also where JSON doubles its backslashes.
run_line() {
  local -a words
  local plain shown='C:\Tavrin' run=run_client
  plain=$(windows_path "$box")
  eval "words=($1)"
  [[ $1 != *--watch* ]] || run=run_watch
  $run "${words[@]:1}" | tr -d '\r' |
    sed -e "s|$(in_pattern "$plain")|$(in_pattern "$shown")|g" -e 's/[ ]*$//' \
      -e "s|$(in_pattern "${plain//\\/\\\\}")|$(in_pattern "${shown//\\/\\\\}")|g"
}

normalise() {
  sed -E -e 's/[█▏▎▍▌▋▊▉◄]+//g' -e 's/[0-9]+( [0-9]{3})* ms/# ms/g' -e 's/[0-9]+\.[0-9]+ s/# s/g' \
    -e 's/up for .*/up for #/' -e 's/"(upSeconds|connectMilliseconds|milliseconds|step|total|latency)": [0-9]+/"\1": #/' \
    -e 's/ +/ /g' -e 's/ $//'
}

lay_out
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
