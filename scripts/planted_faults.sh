#!/usr/bin/env bash
# planted_faults.sh [--count N] [FAULT...]: does the sequences' model find faults? Plants each patch of
# tests/sequence/planted in a copy of the tree in a temporary directory, builds the sequences there,
# optimised and without sanitizers, and runs them until one fails, N (100,000) at most. Shows for each
# fault after how many sequences it was found, and by what. Fails for a fault that is not found and for
# a patch that does not apply any more.
set -euo pipefail
cd "$(dirname "$0")/.."
count=100000
if [ "${1:-}" = --count ]; then
  count=${2:?"--count wants a number"}
  shift 2
fi
faults=("$@")
[ ${#faults[@]} -gt 0 ] || mapfile -t faults < <(basename -s .patch -a tests/sequence/planted/*.patch)

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t "$copy"
patches=$PWD/tests/sequence/planted
cd "$copy"
scripts/build.sh sequences
bad=0
printf '%-48s %9s  %s\n' Fault Sequences 'Found by'
for fault in "${faults[@]}"; do
  if ! patch -p1 -s --dry-run <"$patches/$fault.patch" >/dev/null; then
    printf '%-48s %9s  %s\n' "$fault" - 'the patch does not apply'
    bad=$((bad + 1))
    continue
  fi
  patch -p1 -s <"$patches/$fault.patch"
  if ! scripts/build.sh sequences >"$copy/planted.log"; then
    printf '%-48s %9s  %s\n' "$fault" - 'does not build'
    bad=$((bad + 1))
  elif build/sequences/tests/sequence/sequence_tests --count "$count" --jobs "$(nproc)" \
    >"$copy/planted.log" 2>&1; then
    printf '%-48s %9s  %s\n' "$fault" - "NOT FOUND in $count sequences"
    bad=$((bad + 1))
  else
    seed=$(sed -n 's/^seed \([0-9]*\) fails.*/\1/p' "$copy/planted.log")
    printf '%-48s %9s  %s\n' "$fault" $((seed + 1)) "$(grep -m 1 '^  ' "$copy/planted.log" | sed 's/^ *//')"
  fi
  patch -R -p1 -s <"$patches/$fault.patch"
done
echo "$((${#faults[@]} - bad)) of ${#faults[@]} planted faults found"
[ "$bad" = 0 ]
