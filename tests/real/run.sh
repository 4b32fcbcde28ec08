#!/usr/bin/env bash
# run.sh verdict|traffic CORE, run.sh service TESTS: runs one of the built Go test programs. CORE is xray
# or xray-newest, TESTS the beginning of the tests' names. Ends with the line "N passed, N failed".
set -euo pipefail
# shellcheck source=tests/real/common.sh
. "$(dirname "$0")/common.sh"
tests=$1
export TAVRIN_REAL=$real TAVRIN_GEO_DATA=$real/geo TAVRIN_XRAY=$real/xray
export TAVRIN_NODE_CONFIGURATION=$root/build/native/tests/real/node_configuration
export TAVRIN_OPERATIONS=$root/docs/operations.md TAVRIN_PROTOCOL=$root/docs/control-protocol.md
export TAVRIN_WINDOWS_BUILD=$root/build/windows TAVRIN_LAUNCHER=$root/tests/e2e/run_in_wine.sh
export TAVRIN_EXERCISE=$root/tests/real/node/exercise.js
export TAVRIN_COLLECTED=${TAVRIN_KEPT_FILES:-$root/build/configurations}
unset TAVRIN_KEPT_FILES  # what is generated from here on was collected by nobody
limit=600

need_core
program=("$real/$tests" -test.v -test.timeout "${limit}s")
case "$tests" in
  verdict) TAVRIN_XRAY=$real/$2 ;;
  traffic)
    TAVRIN_XRAY=$real/$2
    need_network
    program=("${isolate[@]}" "${program[@]}")
    ;;
  service)
    [ "$2" != Node ] || [ ! -e "$real/node/skipped" ] || skip "$(cat "$real/node/skipped")"
    need_network
    program=("$root/tests/e2e/in_lane.sh" "$root/build/windows/lanes" "$root/tests/real/with_prng.sh"
      "${program[@]}" -test.run "^Test$2")
    ;;
esac

# The tests without those that are only the heads of others.
count() {
  awk '/^ *--- (PASS|FAIL|SKIP):/ { verdict[$3] = $2 }
    END {
      for (name in verdict) {
        head = name
        while (sub("/[^/]*$", "", head)) isHead[head] = 1
      }
      for (name in verdict) if (!(name in isHead)) n[verdict[name]]++
      printf "%d passed, %d failed\n", n["PASS:"], n["FAIL:"] + n["SKIP:"]
    }' "$1"
}

log=$real/$tests-$2.log
status=0
"${program[@]}" >"$log" 2>&1 || status=$?
[ "$status" = 0 ] || grep -vE '^=== RUN|--- PASS' "$log" || true
grep -hE '^ +[a-z_]+\.go:[0-9]+: .* files, ' "$log" || true
result=$(count "$log")
[ "$status" = 0 ] || [[ $result != *" 0 failed" ]] || result="${result% 0 failed} 1 failed"
echo "$result"
[ "$status" = 0 ] && [[ $result != 0\ passed* ]]
