#!/usr/bin/env bash
# fuzz.sh [SECONDS | --runs COUNT] [TARGET...]: replays the corpus of each fuzz target, then fuzzes it
# for 30 seconds, or so many seconds, or so many executions; two targets at a time. Fails on any find,
# and leaves it in build/fuzz/finds. The committed corpus is read and never written.
set -euo pipefail
cd "$(dirname "$0")/.."

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

scripts/build.sh fuzz

scratch=build/fuzz/scratch
rm -rf "$scratch"
mkdir -p build/fuzz/finds
export limit scratch

# fuzz_one TARGET
fuzz_one() {
  local target=$1
  local program=build/fuzz/tests/fuzz/fuzz_$target corpus=tests/fuzz/corpus/$target
  local log=build/fuzz/$target.log executions
  local options=(-rss_limit_mb=2048 -timeout=20 "-artifact_prefix=build/fuzz/finds/$target-")
  mkdir -p "$scratch/$target"
  # Which inputs are new is for the second run to find out; the first one also looks for leaks.
  if ! "$program" "${options[@]}" -runs=0 "$corpus" >"$log" 2>&1 ||
    ! "$program" "${options[@]}" "$limit" -max_len=1024 -detect_leaks=0 -print_final_stats=1 \
      "-dict=tests/fuzz/dictionaries/$target.dict" "$scratch/$target" "$corpus" >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "fuzz: $target has found something; see build/fuzz/finds and $log"
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
