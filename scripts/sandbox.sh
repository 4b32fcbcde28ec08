# For scripts that show the built programs under Wine, to be sourced with the build directory in
# `build`: a directory `box` with the service, the client and the stand-ins, taken away at the end.
launcher=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/tests/e2e/run_in_wine.sh
export WINEPREFIX="${WINEPREFIX:-$build/wine}"
box=$(mktemp -d)
service=

wine_run() { "$launcher" "$@"; }
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

end_sandbox() {
  if [ -n "$service" ] && kill -0 "$service" 2>/dev/null; then
    kill "$service" || true
  fi
  rm -rf "$box"
}
trap end_sandbox EXIT

lay_out() {
  mkdir -p "$box/runtime/xray" "$box/runtime/tun2socks" "$box/machine"
  cp "$build/TavrinService.exe" "$build/tavrinctl.exe" "$build/standins/iphlpapi.dll" \
    "$build/standins/netsh.exe" "$box/"
  cp "$build/standins/xray.exe" "$box/runtime/xray/"
  cp "$build/standins/tun2socks-windows-amd64.exe" "$box/runtime/tun2socks/"
  for name in tun2socks/wintun.dll xray/geoip.dat xray/geosite.dat; do
    echo "MZ: no such file, the stand-ins need none" >"$box/runtime/$name"
  done
  cat >"$box/runtime/account.json" <<'JSON'
{
  "email": "someone@mail.example",
  "password": "secret",
  "expireAt": "2999-12-31",
  "nodeName": "Tokyo 01",
  "address": "203.0.113.77",
  "port": 443,
  "uuid": "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab",
  "sni": "www.site.example",
  "publicKey": "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA",
  "shortId": "0123abcd"
}
JSON
  echo '{"email":"someone@mail.example","expireAt":"2999-12-31"}' >"$box/runtime/session.json"
  TAVRIN_TEST_MACHINE=$(windows_path "$box/machine")
  export TAVRIN_TEST_MACHINE
}

# What the service prints goes to $box/console.txt.
start_service() {
  wine_run "$box/TavrinService.exe" --console --runtime "$(windows_path "$box/runtime")" \
    >"$box/console.txt" 2>&1 </dev/null &
  service=$!
}

await_service() {
  for _ in $(seq 100); do
    ! wine_run "$box/tavrinctl.exe" request '{"op":"status"}' >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  return 1
}
