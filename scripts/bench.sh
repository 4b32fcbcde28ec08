#!/usr/bin/env bash
# bench.sh [--quick] [--rounds N]: builds the benchmarks optimised and runs those of the native build.
# What they measured is in build/bench/*.jsonl (tests/bench/rounds.h tells its form).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh libsimdjson-dev libssl-dev nlohmann-json3-dev rapidjson-dev valgrind
scripts/build.sh bench
programs=build/bench/tests/bench
"$programs/native_bench" --out build/bench/native.jsonl "$@"
"$programs/platform_calls" --out build/bench/platform_calls.jsonl "$@"
tests/bench/status_instructions.sh --out build/bench/status_instructions.jsonl "$@"
