#!/usr/bin/env bash
# bench.sh [--quick] [--rounds N] [--before FILE] [--write-docs]: measures everything that
# docs/performance.md shows, and shows its table; build/bench.json holds the same, build/bench.jsonl what
# was measured.
#   --quick       few rounds, about a minute
#   --rounds N    so many rounds of everything, at least 9 for figures to be shown
#   --before FILE the build/bench.jsonl of an earlier run, for a column of its own
#   --write-docs  writes the table and the plots into docs/
# Ends with 1 when a figure is missing or a count is another one than it has to be; no time makes it fail.
set -euo pipefail
cd "$(dirname "$0")/.."

options=()
report=()
while [ $# -gt 0 ]; do
  case $1 in
    --quick) options+=("$1") ;;
    --rounds) options+=("$1" "$2"); shift ;;
    --before) report+=("$1" "$2"); shift ;;
    --write-docs) report+=(--docs docs) ;;
    *) sed -n '2,9s/^# //p' "$0" >&2; exit 2 ;;
  esac
  shift
done

scripts/install_packages.sh cmake ninja-build g++ g++-mingw-w64-x86-64-posix clang lld wine wine64 \
  libgtest-dev libgmock-dev googletest nlohmann-json3-dev libcli11-dev libcpp-httplib-dev libssl-dev \
  rapidjson-dev libsimdjson-dev valgrind iproute2 curl jq python3 gnuplot-nox
scripts/build.sh windows --target bench_service
scripts/build.sh bench

data=build/bench.jsonl
part=$PWD/build/bench-part.jsonl
: >"$data"

# measure PROGRAM...: its lines come behind those of the others.
measure() {
  rm -f "$part"
  "$@" "${options[@]}"
  cat "$part" >>"$data"
}

in_lane() { tests/e2e/in_lane.sh build/windows/lanes "$@"; }

# On one processor: on several the figures would say where the scheduler has put the client, the service and
# Wine's server, and how deep the processors slept.
processor=$(taskset -cp $$ | sed 's/.*: //; s/[-,].*//')
measure_in_wine() {
  measure taskset -c "$processor" tests/e2e/in_lane.sh build/windows/lanes tests/e2e/run_in_wine.sh \
    "build/windows/bench/bench_$1.exe" --out "Z:$part"
}

bytes_of() {
  printf '{"figure":"executable","subject":"%s","size":0,"unit":"bytes","samples":[%d]}\n' \
    "$1" "$(stat -c %s "$2")" >>"$data"
}

measure_in_wine exchange
measure_in_wine connect
measure_in_wine start
measure_in_wine tails
measure in_lane tests/e2e/run_with_panel.sh build/windows/test_panel/test_panel \
  tests/bench/service/memory.sh --out "$part"
bytes_of service build/windows/TavrinService.exe
bytes_of comparable build/windows/bench/bench_comparable.exe
measure build/bench/tests/bench/native_bench --out "$part"
measure build/bench/tests/bench/platform_calls --out "$part"
measure tests/bench/status_instructions.sh --out "$part"
PYTHONDONTWRITEBYTECODE=1 scripts/bench/report.py "$data" --json build/bench.json "${report[@]}"
