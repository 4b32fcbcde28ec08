#!/usr/bin/env bash
# Every path that a document names in backticks or as a link exists, and so does every CMake preset.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0
complain() {
  echo "$1"
  failed=1
}
documents=$(git ls-files --cached --others --exclude-standard '*.md')
for document in $documents; do
  while read -r path; do
    [ -e "$path" ] || complain "$document names $path, which does not exist"
  done < <(grep -oE '`(\./)?(src|client|tests|docs|scripts|cmake|packaging|\.ci)/[A-Za-z0-9_./-]*`|`\./[a-z_]+\.sh' "$document" | tr -d '`' | sort -u)
  while read -r target; do
    [ -e "$(dirname "$document")/$target" ] || complain "$document links to $target, which does not exist"
  done < <(grep -oE '\]\([A-Za-z0-9_./-]+\)' "$document" | sed -E 's/^\]\(//; s/\)$//' | sort -u)
  while read -r preset; do
    grep -q "\"name\": \"$preset\"" CMakePresets.json ||
      complain "$document names the preset $preset, which does not exist"
  done < <(grep -oE -- '--preset [a-z-]+' "$document" | sed 's/--preset //' | sort -u)
done
exit "$failed"
