#!/usr/bin/env bash
# mutants.sh [--seed S] [--count N] [--file FILE]... [--jobs J] [--listed]: changes src/ in N places
# that the seed chooses, one at a time, and holds each mutant against the unit tests: operators,
# constants, inverted conditions, dropped statements. Prints a table and the mutants that live.
# Fails when fewer than 97 % of those that compile are killed or in tests/mutants/living.txt, which
# gives a reason for each; and when an entry there is killed or no longer in the code. --listed tries
# the list itself.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh python3 python3-clang-14
scripts/build.sh mutants
exec /usr/bin/python3 -B tests/mutants/run.py "$@"
