#!/usr/bin/env bash
# fuzz.sh [--plain] [SECONDS | --runs COUNT] [TARGET...]: replays the corpus of each fuzz target, then
# fuzzes it for 30 seconds, or so many seconds, or so many executions; two targets at a time. Fails on any
# find, and leaves it in the directory finds of the build. The committed corpus is read and never written. --plain takes
# the optimised build without sanitizers, which is several times as fast and sees less.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=fuzz
if [ "${1:-}" = --plain ]; then
  preset=fuzz-plain
  shift
fi
limit=-max_total_time=30
case "${1:-}" in
  --runs)
    limit=-runs=${2:?"--runs wants a count"}
    shift 2
    ;;
  [0-9]*)
    limit=-max_total_time=$1
    shift
    ;;
esac

scripts/build.sh "$preset"

build=build/$preset
scratch=$build/scratch
rm -rf "$scratch"
mkdir -p "$build/finds"
export limit build scratch

# fuzz_one TARGET
fuzz_one() {
  local target=$1
  local program=$build/tests/fuzz/fuzz_$target corpus=tests/fuzz/corpus/$target
  local log=$build/$target.log executions
  local options=(-rss_limit_mb=2048 -timeout=20 "-artifact_prefix=$build/finds/$target-")
  mkdir -p "$scratch/$target"
  # Which inputs are new is for the second run to find out; the first one also looks for leaks.
  if ! "$program" "${options[@]}" -runs=0 "$corpus" >"$log" 2>&1 ||
    ! "$program" "${options[@]}" "$limit" -max_len=1024 -detect_leaks=0 -print_final_stats=1 \
      "-dict=tests/fuzz/dictionaries/$target.dict" "$scratch/$target" "$corpus" >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "fuzz: $target has found something; see $build/finds and $log"
    return 1
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  [ "${executions:-0}" -gt 0 ] || { echo "fuzz: $target has run nothing"; return 1; }
  printf 'fuzz: %-14s %10d executions, nothing found\n' "$target" "$executions"
}
export -f fuzz_one

targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(ls tests/fuzz/corpus)
printf '%s\n' "${targets[@]}" | xargs -P 2 -I '{}' bash -c 'fuzz_one {}'
