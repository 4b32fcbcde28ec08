#!/usr/bin/env bash
# count_tests.sh BUILD_DIRECTORY: what the last ctest run there counted, as "N passed, N failed".
# ctest has left junit.xml, and each test program its own results in test-results/. A program that
# ended without results, or ran no test, counts as a failure. Fails when anything failed.
set -euo pipefail
cd "$1"
passed=0
failed=0

# number FILE KEY: the total in the head of a GoogleTest result.
number() { sed -n "1,/\"testsuites\"/s/^  \"$2\": \([0-9]*\),.*/\1/p" "$1"; }

# count_program RESULT: sets good and bad.
count_program() {
  good=0
  bad=0
  [ -s "$1" ] || return 0
  bad=$(($(number "$1" failures) + $(number "$1" errors)))
  good=$(($(number "$1" tests) - bad - $(number "$1" disabled) -
    $(grep -c '"result": "SKIPPED"' "$1" || true)))
}

while read -r name status; do
  case "$name" in
    executable.*) good=1 bad=0 ;;  # a script, which is one test
    *) count_program "test-results/$name.json" ;;
  esac
  [ "$status" = run ] || good=$((good * (bad > 0)))
  [ "$bad" -gt 0 ] || { [ "$status" = run ] && [ "$good" -gt 0 ]; } || bad=1
  passed=$((passed + good))
  failed=$((failed + bad))
done < <(sed -nE 's/.*<testcase name="([^"]*)".* status="([a-z]*)".*/\1 \2/p' junit.xml)

echo "$passed passed, $failed failed"
[ "$failed" = 0 ] && [ "$passed" -gt 0 ]
