#!/usr/bin/env bash
# run_ctest.sh BUILD_DIRECTORY TEST_PRESET: runs a test preset, shows what failed, and ends with the
# line "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
rm -rf "$1/test-results" "$1/junit.xml"
status=0
ctest --preset "$2" >"$1/ctest.log" 2>&1 || status=$?
[ "$status" = 0 ] || grep -vE '^ *(Start +[0-9]+:|[0-9]+/[0-9]+ Test +#.* Passed )' "$1/ctest.log" || true
scripts/count_tests.sh "$1" || status=1
exit "$status"
