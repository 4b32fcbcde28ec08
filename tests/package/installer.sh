#!/usr/bin/env bash
# installer.sh PACKAGES STANDINS: the installer in Wine's own installer engine, and the unzipped program.
# PACKAGES has the directories bare, full (with helper programs) and older (full, of version 0.0.9).
# To be run in a lane. Wine keeps no access lists and takes none from a package: see tables.sh for those.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
packages=$(cd "$1" && pwd)
standins=$(cd "$2" && pwd)
# A prefix of its own: what it says of Windows and of itself changes here.
warm=$(dirname "$WINEPREFIX")/warm
machine=$(mktemp -d "$(dirname "$WINEPREFIX")/package-XXXXXX")
export WINEPREFIX=$machine/prefix
"$root/tests/e2e/copy_prefix.sh" "$warm" "$WINEPREFIX"
end_prefix() {
  wineserver -k 2>/dev/null || true
  wineserver -w
  rm -rf "$machine"
}
trap end_prefix EXIT
place="$WINEPREFIX/drive_c/Program Files/Tavrin"
installed='C:\Program Files\Tavrin'
down='{"ok":true,"running":false,"error":""}'
up='{"ok":true,"running":true,"error":""}'

in_wine() { "$root/tests/e2e/run_in_wine.sh" "$@"; }
ctl() { in_wine "$installed\\tavrinctl.exe" "$@" 2>&1 | tr -d '\r'; }
msi_of() { ls "$packages/$1"/*.msi; }

# installer WHAT CODE ARGUMENT...: msiexec without a window.
installer() {
  local code=0
  in_wine msiexec "${@:3}" /qn >"$machine/said.txt" 2>&1 || code=$?
  expect "$1: the exit code of msiexec" "$2" "$code"
}

# 67 is what a shell sees of 1603, "fatal error during installation", and 91 of 1627, with which Wine
# ends when a program of the package has failed.
install() { installer "$1" "$2" /i "$(msi_of "$3")"; }
remove() { installer "$1" 0 /x "$(msi_of "$2")" "${@:3}"; }

registry() { in_wine reg query "$@" 2>/dev/null | tr -d '\r'; }
service_entry() {
  registry 'HKLM\SYSTEM\CurrentControlSet\Services\TavrinService' /v ImagePath | sed -n 's/.*REG_[A-Z_]* *//p'
}
# Wine leaves the separator of an entry that it removes.
search_path() {
  registry 'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment' /v PATH |
    sed -n 's/.*REG_[A-Z_]* *//p' | tr ';' '\n' | sed '/^$/d'
}
# The versions that the list of installed programs has.
listed() {
  registry 'HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall' /s | sed -n '/DisplayName .*Tavrin$/,/^$/p' |
    sed -n 's/.*DisplayVersion *REG_SZ *//p'
}
files_in() { (cd "$place/$1" 2>/dev/null && find . -type f | sed 's|^\./||' | LC_ALL=C sort | tr '\n' ' ') || echo nothing; }
status_reply() { ctl request '{"op":"status"}'; }
show_network() { in_wine "Z:$standins/show_machine.exe" routes | tr -d '\r'; }

windows_is() {
  in_wine reg add 'HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion' /v CurrentBuildNumber /d "$1" /f >/dev/null
}

# The simulated network beside the installed service, and an account.
put_network_and_data() {
  mkdir -p "$place/runtime"
  cp "$standins/iphlpapi.dll" "$standins/netsh.exe" "$place/"
  printf 'Z:%s' "${machine//\//\\}" >"$place/test-machine.txt"
  export TAVRIN_TEST_MACHINE="Z:${machine//\//\\}"
  cat >"$place/runtime/account.json" <<'JSON'
{ "email": "someone@mail.example", "password": "secret", "expireAt": "2999-12-31", "nodeName": "Tokyo 01",
  "address": "203.0.113.77", "port": 443, "uuid": "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab",
  "sni": "www.site.example", "publicKey": "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", "shortId": "0123abcd" }
JSON
  echo '{"email":"someone@mail.example","expireAt":"2999-12-31"}' >"$place/runtime/session.json"
  echo '{}' >"$place/runtime/panel.json"
}
data_sums() { (cd "$place/runtime" && sha256sum account.json session.json panel.json); }
take_network_away() { rm -f "$place/iphlpapi.dll" "$place/netsh.exe" "$place/test-machine.txt"; }

# nothing_is_left WHAT [FILES]
nothing_is_left() {
  expect "$1: no service" '' "$(service_entry)"
  expect "$1: no file" "${2:-nothing}" "$(files_in .)"
  expect "$1: the search path as before" "$path_before" "$(search_path)"
  expect "$1: not listed as installed" '' "$(listed)"
}

old_windows_is_refused() {
  windows_is 18363
  install 'on Windows 10 version 1909' 67 bare
  nothing_is_left 'on Windows 10 version 1909'
  windows_is 19045
}

first_installation() {
  install 'first installation' 0 bare
  expect 'the service answers' "$down" "$(status_reply)"
  expect 'tavrinctl status' "Tavrin is not connected.
Service  running as a Windows service, version 0.1.0, $installed\\runtime" "$(ctl status)"
  expect 'the registered command line' \
    "\"$installed\\TavrinService.exe\" --runtime \"$installed\\runtime\"" "$(service_entry)"
  expect 'the search path' "$path_before"$'\n'"$installed\\" "$(search_path)"
  expect 'listed as installed' 0.1.0 "$(listed)"
  expect 'the runtime directory' 'HELPERS.txt tavrin-service.log ' "$(files_in runtime)"
  expect 'the doctor says what is missing' \
    "✗ Programs           not in $installed\\runtime: xray\\xray.exe, xray\\geoip.dat, xray\\geosite.dat, tun2socks\\wintun.dll, tun2socks\\tun2socks*.exe" \
    "$(ctl doctor | grep Programs)"
  remove 'removal' bare
  nothing_is_left 'removal'
}

failing_registration() {
  coproc HOLDER { in_wine "Z:$standins/hold_service_name.exe" TavrinService 2>&1; }
  local holder=$HOLDER_PID said
  read -r -u "${HOLDER[0]}" said
  expect 'the name of the service is held' held "${said%$'\r'}"
  install 'the name of the service is being deleted' 91 bare
  expect 'the program says why' 'CreateService failed err=1072' "$(grep -ao 'CreateService failed err=[0-9]*' "$machine/said.txt")"
  exec {HOLDER[1]}>&-
  wait "$holder" || true
  nothing_is_left 'after a failed registration'
}

# A package of which another program fails when the service is registered and running.
failure_after_the_registration() {
  local msi=$machine/failing.msi
  cp "$(msi_of bare)" "$msi"
  msibuild "$msi" -q "INSERT INTO \`CustomAction\` (\`Action\`, \`Type\`, \`Source\`, \`Target\`) VALUES ('Fail', 3090, 'tavrinctl.exe', '--frob')"
  msibuild "$msi" -q "INSERT INTO \`InstallExecuteSequence\` (\`Action\`, \`Sequence\`) VALUES ('Fail', 6403)"
  installer 'a failure after the registration' 91 /i "Z:$msi"
  expect 'the service was registered' 'Installed and started TavrinService' \
    "$(grep -ao 'Installed and started TavrinService' "$machine/said.txt")"
  nothing_is_left 'after a failure' 'runtime/tavrin-service.log '  # for who looks for the reason
}

upgrade_over_a_tunnel() {
  put_network_and_data
  install 'older version' 0 older
  expect 'the older version' 'tavrinctl 0.0.9' "$(ctl --version)"
  expect 'its panel is the vendor'\''s' '  "panelDomain": "panel.vendor.example",' "$(ctl --version --json | grep panelDomain)"
  before=$(show_network)
  sums=$(data_sums)
  expect 'a tunnel with the older version' "$up" "$(ctl request '{"op":"connect"}')"
  expect 'its routes' 2 "$(show_network | grep -c ' on tavrin$')"
  install 'upgrade' 0 full
  expect 'the network after the upgrade' "$before" "$(show_network)"
  expect 'the data after the upgrade' "$sums" "$(data_sums)"
  expect 'the new version answers' "$down" "$(status_reply)"
  expect 'the new version' 'tavrinctl 0.1.0' "$(ctl --version)"
  expect 'only the new version is listed' 0.1.0 "$(listed)"
  expect 'the search path has one entry' "$path_before"$'\n'"$installed\\" "$(search_path)"
  expect 'a tunnel with the new version' "$up" "$(ctl request '{"op":"connect"}')"
  expect 'and down again' "$down" "$(ctl request '{"op":"disconnect"}')"
}

# Wine's msiexec knows no /f, so the words that /f stands for.
repair() {
  in_wine sc stop TavrinService >/dev/null
  rm "$place/TavrinService.exe" "$place/runtime/xray/xray.exe"
  echo damaged >"$place/tavrinctl.exe"
  installer 'repair' 0 /i "$(msi_of full)" REINSTALL=ALL REINSTALLMODE=amus
  expect 'the service answers after the repair' "$down" "$(status_reply)"
  expect 'the client is whole' 'tavrinctl 0.1.0' "$(ctl --version)"
  expect 'the data after the repair' "$sums" "$(data_sums)"
  expect 'the helper program is back' "$up" "$(ctl request '{"op":"connect"}')"
}

older_version_is_refused() {
  install 'an older version over a newer one' 67 older
  expect 'the newer version stays' 'tavrinctl 0.1.0' "$(ctl --version)"
  expect 'and its tunnel' "$up" "$(status_reply)"
}

removal_keeps_the_data() {
  remove 'removal over a tunnel' full
  expect 'the network after the removal' "$before" "$(show_network)"
  take_network_away
  expect 'the data stays' "$sums" "$(data_sums)"
  expect 'and nothing else' 'runtime/account.json runtime/panel.json runtime/session.json ' "$(files_in .)"
  expect 'no service' '' "$(service_entry)"
}

installation_after_a_removal() {
  install 'installation over the data' 0 full
  expect 'the data is found' "$sums" "$(data_sums)"
  expect 'the service answers again' "$down" "$(status_reply)"
  remove 'removal with the data' full REMOVEDATA=1
  nothing_is_left 'removal with the data'
}

unzipped() {
  local box=$machine/unzipped zip
  zip=$(ls "$packages/full"/*.zip)
  succeeds 'the zip is whole' unzip -tq "$zip"
  unzip -q "$zip" -d "$box"
  box=$box/tavrin-0.1.0
  in_wine "$box/TavrinService.exe" --console >"$machine/console.txt" 2>&1 </dev/null &
  local service=$! reply=
  for _ in $(seq 100); do
    reply=$(in_wine "$box/tavrinctl.exe" request '{"op":"status"}' 2>/dev/null | tr -d '\r') && [ -n "$reply" ] && break
    sleep 0.1
  done
  expect 'the unzipped service answers' "$down" "$reply"
  expect 'it has found its runtime directory' 1 "$(grep -c 'unzipped.tavrin-0.1.0.runtime' "$machine/console.txt")"
  in_wine "$box/tavrinctl.exe" shutdown >/dev/null 2>&1
  local code=0
  wait "$service" || code=$?
  expect 'the exit code of the unzipped service' 0 "$code"
}

path_before=$(search_path)
old_windows_is_refused
first_installation
failing_registration
failure_after_the_registration
upgrade_over_a_tunnel
repair
older_version_is_refused
removal_keeps_the_data
installation_after_a_removal
unzipped
finish
