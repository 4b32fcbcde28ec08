#!/usr/bin/env bash
# Builds the real Xray, tun2socks and the tests that use them from their Go modules, into build/real.
# Without a Go that is new enough, or without the modules, the last line says "skipped: REASON", and
# nothing of an earlier build is left for the tests.
set -euo pipefail
# shellcheck source=tests/real/common.sh
. "$(dirname "$0")/common.sh"
export GOTOOLCHAIN=local GOWORK=off CGO_ENABLED=0 GOFLAGS="${GOFLAGS:-} -trimpath -buildvcs=false"
xray=github.com/xtls/xray-core/main
tun2socks=github.com/xjasonlyu/tun2socks/v2

rm -f "$real"/{xray,xray-newest,xray.exe,tun2socks.exe,tun2socks-old.exe,geodata,verdict,traffic,service}
echo "the programs were not built" >"$real/skipped"

give_up() {
  echo "$1" >"$real/skipped"
  skip "$1"
}

require_go() {
  command -v go >/dev/null || give_up "there is no Go on this machine"
  local wanted present
  wanted=$(sed -n 's/^go //p' "$root"/tests/real/*/go.mod | sort -V | tail -n 1)
  present=$(go env GOVERSION)
  [ "$(printf 'go%s\n%s\n' "$wanted" "$present" | sort -V | head -n 1)" = "go$wanted" ] ||
    give_up "Go $wanted is needed, and $present is here"
}

# What a go.mod or go.sum of this repository can be wrong in; every other failure is the machine's.
own_faults='missing go.sum entry|updates to go.mod needed|parsing go.mod|no required module provides|'
own_faults+='cannot find module providing|SECURITY ERROR|is not in std'

# fetch SYSTEM MODULE PACKAGE...: has all modules that the packages need, whole.
fetch() {
  local system=$1 module=$2 log=$real/fetch.log
  shift 2
  if (cd "$root/tests/real/$module" && GOOS=$system go list -deps -test "$@" >/dev/null &&
    go mod verify >/dev/null) 2>"$log"; then
    return 0
  fi
  cat "$log"
  ! grep -qE "$own_faults" "$log" || exit 1
  give_up "the Go modules of tests/real/$module can't be had: $(tail -n 1 "$log" | sed -E 's#https?://[^ ]*##g')"
}

# build SYSTEM MODULE PROGRAM PACKAGE [OPTION...]
build() {
  local system=$1 module=$2 program=$3 package=$4
  shift 4
  (cd "$root/tests/real/$module" &&
    GOOS=$system GOARCH=amd64 go build -ldflags='-s -w' "$@" -o "$real/$program" "$package")
}

build_tests() {
  (cd "$root/tests/real/core" && GOFLAGS="$GOFLAGS" go test -c -o "$real/$1" "./$1")
}

# Wine 8 does not know SIO_UDP_NETRESET, which Go's net package sets on every UDP socket. The one file
# that does it asks for SIO_UDP_CONNRESET twice instead; Xray's own code stays as it is.
write_overlay() {
  local file
  file=$(go env GOROOT)/src/net/fd_windows.go
  sed 's/windows\.SIO_UDP_NETRESET/syscall.SIO_UDP_CONNRESET/' "$file" >"$real/fd_windows.go"
  printf '{"Replace":{"%s":"%s"}}\n' "$file" "$real/fd_windows.go" >"$real/overlay.json"
}

require_go
fetch linux core "$xray" ./...
fetch windows core "$xray"
fetch linux core-newest "$xray"
fetch windows tun2socks "$tun2socks"
fetch windows tun2socks-old "$tun2socks"

write_overlay
build linux core xray "$xray"
build linux core geodata ./geodata
build windows core xray.exe "$xray" -overlay "$real/overlay.json"
build linux core-newest xray-newest "$xray"
build windows tun2socks tun2socks.exe "$tun2socks"
build windows tun2socks-old tun2socks-old.exe "$tun2socks"
for tests in verdict traffic service; do build_tests "$tests"; done
x86_64-w64-mingw32-g++-posix -shared -static -s -o "$real/bcryptprimitives.dll" \
  "$root/tests/real/bcryptprimitives.cpp" -ladvapi32
mkdir -p "$real/geo"
"$real/geodata" "$real/geo"
rm "$real/skipped"
