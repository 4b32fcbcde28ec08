#!/usr/bin/env bash
# bench.sh [OPTION...]: builds the benchmarks optimised and runs them, with Google Benchmark's options.
# `copies` is the time in plain copies of the same bytes; each group ends with its growth.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh libbenchmark-dev
scripts/build.sh bench
exec build/bench/tests/bench/tavrin_bench --benchmark_counters_tabular=true "$@"
