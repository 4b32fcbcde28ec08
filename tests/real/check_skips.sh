#!/usr/bin/env bash
# What the stages with the real programs do on a machine that lacks something: each ends well and says
# so in its last line, and nothing is left that a later one could run. What needs a Go to be tested is left
# out where there is none. Ends with the line "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")"
box=$(mktemp -d)
trap 'chmod -R u+w "$box"; rm -rf "$box"' EXIT
export TAVRIN_REAL_BUILD=$box/real GOFLAGS=-modcacherw
passed=0
failed=0

# A PATH with what the scripts need and without Go and npm.
mkdir -p "$box/bin" "$box/old"
for tool in bash cat cp dirname env grep head id mkdir rm sed sort tail unshare; do
  ln -s "$(command -v "$tool")" "$box/bin/"
done
printf '#!/bin/sh\necho go1.19.8\n' >"$box/old/go"
chmod +x "$box/old/go"

# expect_skip WANTED COMMAND...: the command ends with 0 and its last line begins so.
expect_skip() {
  local wanted=$1 output status=0
  shift
  output=$("$@" 2>&1) || status=$?
  if [ "$status" = 0 ] && [[ $(tail -n 1 <<<"$output") == "skipped: $wanted"* ]]; then
    passed=$((passed + 1))
  else
    echo "exit code $status instead of 'skipped: $wanted': $output"
    failed=$((failed + 1))
  fi
}

missing="the Go modules of tests/real/core can't be had: "
expect_skip "there is no Go on this machine" env PATH="$box/bin" ./build.sh
for tests in "verdict xray" "traffic xray-newest" "service Core"; do
  # shellcheck disable=SC2086
  expect_skip "there is no Go on this machine" ./run.sh $tests
done
expect_skip "Go 1.26 is needed, and go1.19.8 is here" env PATH="$box/old:$box/bin" ./build.sh
expect_skip "there is no npm on this machine" env PATH="$box/bin" ./fetch_node.sh
mv "$box/real/skipped" "$box/skipped"  # as on a machine with Go
expect_skip "there is no npm on this machine" ./run.sh service Node

if command -v go >/dev/null && [ "$(go env GOMODCACHE)" != "" ]; then
  expect_skip "${missing}module lookup disabled" env GOPROXY=off GOMODCACHE="$box/empty" ./build.sh
  expect_skip "$missing" env GOPROXY=http://127.0.0.1:9 GOMODCACHE="$box/empty" ./build.sh
  whole=$(go env GOMODCACHE)/cache/download
  half=$box/half/cache/download
  zip=$(cd "$whole" && ls github.com/xtls/xray-core/@v/*.zip 2>/dev/null | head -n 1)
  if [ -n "$zip" ]; then
    mkdir -p "$half"
    cp -rs "$whole/." "$half"
    for zip in "$half"/github.com/xtls/xray-core/@v/*.zip; do
      content=$(readlink "$zip")
      rm "$zip"
      head -c 200000 "$content" >"$zip"
    done
    expect_skip "$missing" env GOPROXY=off GOMODCACHE="$box/half" ./build.sh
  fi
fi
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
