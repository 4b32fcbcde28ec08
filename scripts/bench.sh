#!/usr/bin/env bash
# bench.sh: builds the benchmarks optimised and runs those of the native build; what they measured is
# in build/bench/native.jsonl (tests/bench/rounds.h tells its form).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh libsimdjson-dev libssl-dev nlohmann-json3-dev rapidjson-dev
scripts/build.sh bench
exec build/bench/tests/bench/native_bench --out build/bench/native.jsonl "$@"
