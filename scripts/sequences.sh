#!/usr/bin/env bash
# sequences.sh --count N [--seed S] [--jobs J] [--plain]: runs so many sequences of events against the
# reference model, from seed S (0) on, J processes at a time. Under AddressSanitizer and UBSan;
# --plain takes the optimised build without them. Leaves the table of states and events in
# build/sequences.txt and shows it. A failure is shrunk and printed with the command that replays it.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=native
count=
options=()
while [ $# -gt 0 ]; do
  case "$1" in
    --plain) preset=sequences; shift ;;
    --count) count=${2:?"--count wants a number"}; shift 2 ;;
    --seed | --jobs) options+=("$1" "${2:?"$1 wants a number"}"); shift 2 ;;
    *) count=; break ;;
  esac
done
[ -n "$count" ] || { echo "usage: scripts/sequences.sh --count N [--seed S] [--jobs J] [--plain]" >&2; exit 2; }

scripts/build.sh "$preset" --target sequence_tests
table=build/sequences.txt
rm -f "$table"
start=$SECONDS
"build/$preset/tests/sequence/sequence_tests" --count "$count" --table "$table" "${options[@]}"
cat "$table"
echo "$count sequences in $((SECONDS - start)) seconds"
