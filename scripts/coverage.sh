#!/usr/bin/env bash
# Line and branch coverage of src/ by the native tests; fails below 100 % of lines or 95 % of branches,
# and for client/ below 95 % of lines.
# Branches that the compiler makes for exceptions are not counted: the product catches none.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh gcovr
scripts/build.sh coverage
find build/coverage -name '*.gcda' -delete
scripts/run_ctest.sh build/coverage coverage
report() {
  gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    build/coverage "$@"
}
report --txt build/coverage.txt --html-details build/coverage/report.html
cat build/coverage.txt
report --branches --txt build/coverage-branches.txt --fail-under-line 100 --fail-under-branch 95
tail -n 5 build/coverage-branches.txt
gcovr --root . --filter 'client/' build/coverage --txt build/coverage-client.txt --fail-under-line 95
tail -n 5 build/coverage-client.txt
