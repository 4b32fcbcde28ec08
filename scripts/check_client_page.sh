#!/usr/bin/env bash
# check_client_page.sh BUILD_DIRECTORY [PICTURE]: makes the page of a connect's trace, opens it in a headless
# Chromium at two widths, in light and dark, and holds each bar's length on the screen against the
# trace. With PICTURE the wide light page is kept there. Needs Chromium.
set -euo pipefail
build=$(cd "$1" && pwd)
picture=${2:-}
# shellcheck source=scripts/sandbox.sh
. "$(dirname "$0")/sandbox.sh"
"$(dirname "$0")/install_packages.sh" chromium fonts-noto-cjk

# Writes what the browser measured into the page's title: for each bar its milliseconds, the
# connect's, its width and the width of its track, and whether the page is wider than its window.
measure='<script>
addEventListener("load", () => {
  const bars = [...document.querySelectorAll("section rect")].map(bar => {
    const track = bar.ownerSVGElement.getBoundingClientRect().width;
    const total = bar.closest("section").dataset.total;
    return [bar.dataset.ms, total, bar.getBoundingClientRect().width.toFixed(2), track.toFixed(2)].join(":");
  });
  const root = document.documentElement;
  const colour = getComputedStyle(document.body).backgroundColor;
  document.title = [root.scrollWidth <= innerWidth ? "fits" : "overflows", colour, ...bars].join(" | ");
});
</script></body>'

browse() { chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$box/browser" "$@" 2>/dev/null; }

failed=0
complain() {
  echo "$1"
  failed=1
}

# check_bars WHERE LINE...: each bar is as long as its part of the connect, to a pixel.
check_bars() {
  local where=$1 bars=0
  while IFS=: read -r ms total width track; do
    bars=$((bars + 1))
    awk -v m="$ms" -v t="$total" -v w="$width" -v r="$track" \
      'BEGIN { d = w - (t > 0 ? m / t * r : 0); exit !(d < 1 && d > -1) }' ||
      complain "$where: a bar of $ms of $total ms is $width of $track wide"
  done
  [ "$bars" -ge 9 ] || complain "$where: $bars bars"
}

# open_page WIDTH SCHEME BACKGROUND
open_page() {
  local where="$1 pixels, $2" title
  title=$(browse --window-size="$1,900" --blink-settings="preferredColorScheme=$3" --dump-dom \
    "file://$box/measured.html" | sed -n 's/.*<title>\(.*\)<\/title>.*/\1/p')
  [ -n "$title" ] || complain "$where: the browser showed nothing"
  [[ $title == fits* ]] || complain "$where: the page is wider than its window"
  [[ $title == *"$4"* ]] || complain "$where: the background is not $4 in $title"
  check_bars "$where" < <(tr '|' '\n' <<<"$title" | sed -n 's/^ *\([0-9]*:[0-9]*:[0-9.]*:[0-9.]*\) *$/\1/p')
}

lay_out
start_service
await_service
for _ in 1 2 3; do
  wine_run "$box/tavrinctl.exe" connect --quiet
done
wine_run "$box/tavrinctl.exe" trace --html "$(windows_path "$box/page.html")"
wine_run "$box/tavrinctl.exe" shutdown >/dev/null
{
  sed '/<\/body>/,$d' "$box/page.html"
  printf '%s\n</html>\n' "$measure"
} >"$box/measured.html"
open_page 1100 light 1 'rgb(255, 255, 255)'
open_page 1100 dark 0 'rgb(21, 25, 31)'
open_page 420 light 1 'rgb(255, 255, 255)'
open_page 420 dark 0 'rgb(21, 25, 31)'
[ -z "$picture" ] || browse --window-size=1100,900 --screenshot="$picture" "file://$box/page.html"
exit "$failed"
