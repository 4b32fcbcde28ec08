#!/usr/bin/env bash
# refusals.sh: what scripts/package.sh refuses, with which words, and that it leaves nothing half made. All
# of it is refused before anything is built.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
box=$(mktemp -d)
trap 'rm -rf "$box"' EXIT
chmod 755 "$box"
# Where also somebody without rights may read.
cp -r "$root/scripts" "$root/cmake" "$box/"
package=$box/scripts/package.sh

# refuses WHAT LINE OPTION...: also, an earlier dist stays as it is, and nothing lies beside it.
refuses() {
  mkdir -p "$box/out/dist"
  echo earlier >"$box/out/dist/SHA256SUMS"
  fails_with "$1" "package.sh: $2" "$package" --output "$box/out/dist" "${@:3}"
  expect "$1: nothing half made" './dist ./dist/SHA256SUMS' "$(cd "$box/out" && find . -mindepth 1 | sort | tr '\n' ' ' | sed 's/ $//')"
  expect "$1: what was there stays" earlier "$(cat "$box/out/dist/SHA256SUMS")"
}

put_helpers() {
  local file
  rm -rf "$box/helpers"
  mkdir -p "$box/helpers/xray" "$box/helpers/tun2socks"
  for file in xray/xray.exe xray/geoip.dat xray/geosite.dat tun2socks/wintun.dll tun2socks/tun2socks-windows-amd64.exe; do
    echo something >"$box/helpers/$file"
  done
}

wrong_values() {
  refuses 'a version that is none' \
    "TAVRIN_VERSION: '1.2' is no version of three numbers, such as 1.2.3 (255.255.65535 at most)" --version 1.2
  refuses 'a panel that is no domain' \
    "TAVRIN_PANEL_DOMAIN: 'https://x' is no domain in lower case, such as panel.example" -DTAVRIN_PANEL_DOMAIN=https://x
  fails_with 'an unknown option' 'package.sh [OPTION...]: builds both executables and makes dist/ with the installer, the zip, SHA256SUMS' \
    "$package" --frob
  fails_with 'an option without its value' 'package.sh [OPTION...]: builds both executables and makes dist/ with the installer, the zip, SHA256SUMS' \
    "$package" --sign
}

wrong_helpers() {
  refuses 'no directory of helpers' "the directory of the helper programs, $box/nowhere, does not exist" --with-helpers "$box/nowhere"
  for file in xray/xray.exe xray/geoip.dat xray/geosite.dat tun2socks/wintun.dll; do
    put_helpers
    rm "$box/helpers/$file"
    refuses "no $file" "$box/helpers has no $file" --with-helpers "$box/helpers"
  done
  : >"$box/helpers/tun2socks/wintun.dll"
  refuses 'an empty helper' "$box/helpers has no tun2socks/wintun.dll" --with-helpers "$box/helpers"
  put_helpers
  rm "$box/helpers/tun2socks/tun2socks-windows-amd64.exe"
  refuses 'no tun2socks' "$box/helpers has no tun2socks/tun2socks*.exe" --with-helpers "$box/helpers"
  for name in 'with blank' $'\u754c'; do
    put_helpers
    echo x >"$box/helpers/xray/$name"
    refuses "a helper called $name" \
      "$box/helpers has xray/$name: only plain files with letters, digits, dots, - and _ in their names can go in" \
      --with-helpers "$box/helpers"
  done
}

wrong_places() {
  echo "a file" >"$box/dist"
  fails_with 'a file in the place of dist' "package.sh: $box/dist is in the way: it is no directory" "$package" --output "$box/dist"
  expect 'the file stays' 'a file' "$(cat "$box/dist")"
  fails_with 'no directory for dist' "package.sh: $box/no does not exist" "$package" --output "$box/no/dist"
  mkdir -p "$box/locked/dist"
  chmod 555 "$box/locked/dist"
  fails_with 'a dist that is read-only' "package.sh: $box/locked/dist can't be written" as_somebody "$package" --output "$box/locked/dist"
  expect 'nothing in it' '' "$(ls -A "$box/locked/dist")"
  chmod 555 "$box/locked"
  fails_with 'a directory that is read-only' "package.sh: $box/locked can't be written" as_somebody "$package" --output "$box/locked/new"
  expect 'nothing beside it' dist "$(ls -A "$box/locked")"
}

# Nothing is read-only for root.
as_somebody() {
  if [ "$(id -u)" = 0 ]; then
    setpriv --reuid=65534 --regid=65534 --clear-groups "$@"
  else
    "$@"
  fi
}

wrong_values
wrong_helpers
wrong_places
finish
