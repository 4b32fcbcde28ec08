#!/usr/bin/env bash
# all.sh BUILD: every test of the packages, with the stand-ins and the Wine lanes of BUILD. Shows what is
# not as expected, and ends with the line "N passed, N failed".
set -euo pipefail
build=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
work=$build/packages
passed=0
failed=0

# part SCRIPT ARGUMENT...
part() {
  local said
  echo "$(date -u +%H:%M:%S) ${1##*/}"
  said=$("$@" 2>&1) || true
  if [[ $said =~ ([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
    [ "${BASH_REMATCH[2]}" = 0 ] || echo "$said"
  else
    echo "$said"
    failed=$((failed + 1))
  fi
}

# The packages that the installer is tested with, from the first clone's build. The helper programs are
# stand-ins; the older version is a vendor's build.
make_packages() {
  local helpers=$work/helpers file
  mkdir -p "$helpers/xray" "$helpers/tun2socks"
  cp "$build/standins/xray.exe" "$helpers/xray/"
  cp "$build/standins/tun2socks-windows-amd64.exe" "$helpers/tun2socks/"
  for file in xray/geoip.dat xray/geosite.dat tun2socks/wintun.dll; do
    echo "no such file, the stand-ins need none" >"$helpers/$file"
  done
  "$work/clone/scripts/package.sh" --output "$work/full" --with-helpers "$helpers" &&
    "$work/clone/scripts/package.sh" --output "$work/older" --with-helpers "$helpers" --version 0.0.9 \
      -DTAVRIN_PANEL_DOMAIN=panel.vendor.example || return 1
  ln -sfn "$work/clone/dist" "$work/bare"
  echo "1 passed, 0 failed"
}

part "$here/deployment_form.sh"
part "$here/refusals.sh"
part "$here/repeatable.sh" "$work"
part "$here/signatures.sh" "$work/clone"
part make_packages
part "$here/tables.sh" "$(ls "$work"/bare/*.msi)"
part "$here/../e2e/in_lane.sh" "$build/lanes" "$here/installer.sh" "$work" "$build/standins"
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
