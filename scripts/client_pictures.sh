#!/usr/bin/env bash
# client_pictures.sh BUILD_DIRECTORY: makes docs/images/ anew from a run: the terminal after a connect, and
# the page of the trace.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p docs/images

scripts/check_client_page.sh "$1" "$PWD/docs/images/page.png"
WINEPREFIX="${WINEPREFIX:-$(cd "$1" && pwd)/wine}" wineserver -k || true
scripts/check_client_screen.sh "$1" "$work/screen.txt"
{
  echo '<meta charset="utf-8"><style>body { margin: 0; background: #0c0c0c; color: #ccc }
pre { margin: 12px 16px; font: 16px/1.35 "DejaVu Sans Mono", "Noto Sans Mono CJK SC", monospace }
b { color: #16c60c; font-weight: normal }</style><pre>'
  echo '<span style="color:#888">&gt;</span> tavrinctl connect "Tokyo 01"'
  sed -e '/^$/d' -e 's/\x1b\[92m/<b>/g' -e 's/\x1b\[39m/<\/b>/g' "$work/screen.txt"
  echo '</pre>'
} >"$work/screen.html"
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$work/browser" \
  --window-size=680,310 --screenshot="$PWD/docs/images/connect.png" "file://$work/screen.html" 2>/dev/null
