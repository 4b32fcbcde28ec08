#!/usr/bin/env bash
# Line and branch coverage of src/ by the native tests; fails below 100 % of lines or 95 % of branches.
# Branches that the compiler makes for exceptions are not counted: the product catches none.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh gcovr
mkdir -p build
cmake --preset coverage >build/coverage.log
cmake --build --preset coverage >build/coverage.log 2>&1 || { tail -n 60 build/coverage.log; exit 1; }
find build/coverage -name '*.gcda' -delete
ctest --preset coverage >build/coverage-tests.log || { tail -n 60 build/coverage-tests.log; exit 1; }
report() {
  gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    build/coverage "$@"
}
report --txt build/coverage.txt --html-details build/coverage/report.html
cat build/coverage.txt
report --branches --txt build/coverage-branches.txt --fail-under-line 100 --fail-under-branch 95
tail -n 5 build/coverage-branches.txt
