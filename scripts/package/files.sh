# For scripts/package.sh, to be sourced: the files that both packages have, and the zip.

wanted_helpers='xray/xray.exe xray/geoip.dat xray/geosite.dat tun2socks/wintun.dll'

check_helpers() {
  local file odd
  [ -d "$helpers" ] || give_up "the directory of the helper programs, $helpers, does not exist"
  for file in $wanted_helpers; do
    [ -s "$helpers/$file" ] || give_up "$helpers has no $file"
  done
  compgen -G "$helpers/tun2socks/tun2socks*.exe" >/dev/null || give_up "$helpers has no tun2socks/tun2socks*.exe"
  odd=$(cd "$helpers" && find xray tun2socks ! -type d ! -type f -o -name '*[!A-Za-z0-9._-]*' | LC_ALL=C sort | head -n 1)
  [ -z "$odd" ] || give_up "$helpers has $odd: only plain files with letters, digits, dots, - and _ in their names can go in"
}

# In one line, what is still to be put where.
remark() {
  if [ -n "$helpers" ]; then
    echo 'With the helper programs.'
  else
    echo 'Still to be put into the directory runtime: xray\xray.exe, xray\geoip.dat, xray\geosite.dat,' \
      'tun2socks\tun2socks-windows-amd64.exe, tun2socks\wintun.dll.'
  fi
}

helpers_text() {
  if [ -n "$helpers" ]; then
    echo 'These helper programs came with the package:'
    (cd "$helpers" && find xray tun2socks -type f | LC_ALL=C sort | sed 's|^|  |; s|/|\\|g')
    return
  fi
  cat <<'TXT'
The helper programs are not in this package. Put these files here, with administrator's rights:
  xray\xray.exe                             the Xray core
  xray\geoip.dat                            its data, with the codes CN and PRIVATE
  xray\geosite.dat                          its data, with the codes CN and GOOGLE
  tun2socks\tun2socks-windows-amd64.exe     tun2socks 2.6.0 or newer
  tun2socks\wintun.dll                      the Wintun library for 64 bits
tavrinctl doctor says what is still missing.
TXT
}

# The notices of the libraries that are in the executables.
copy_licences() {
  local pair notice
  mkdir "$1/licences"
  for pair in cli11:libcli11-dev nlohmann-json:nlohmann-json3-dev gcc:g++-mingw-w64-x86-64-posix \
    mingw-w64:mingw-w64-x86-64-dev; do
    notice=/usr/share/doc/${pair#*:}/copyright
    [ -e "$notice" ] || give_up "$notice is missing: the packages must hold it"
    cp -L "$notice" "$1/licences/${pair%%:*}.txt"
  done
}

# fill_stage STAGE: with the same times and rights for everything.
fill_stage() {
  local file
  for file in TavrinService tavrinctl; do
    cp "$build/$file.exe" "$1/"
    [ -z "$certificate" ] || sign "$1/$file.exe"
  done
  mkdir -p "$1/docs/images" "$1/runtime/xray" "$1/runtime/tun2socks"
  cp README.md CHANGELOG.md CONTRIBUTING.md "$1/"
  cp docs/*.md "$1/docs/"
  cp docs/images/*.png "$1/docs/images/"
  copy_licences "$1"
  if [ -n "$helpers" ]; then
    cp -r "$helpers/xray" "$helpers/tun2socks" "$1/runtime/"
  fi
  helpers_text | sed 's/$/\r/' >"$1/runtime/HELPERS.txt"
  find "$1" -type d -exec chmod 755 '{}' + -o -exec chmod 644 '{}' +
  find "$1" -exec touch -d "@$SOURCE_DATE_EPOCH" '{}' +
}

# make_zip STAGE ZIP NAME: everything in a directory of this name, in the order of the names.
make_zip() (
  cd "$(dirname "$1")"
  mv "$1" "$3"
  find "$3" | LC_ALL=C sort | zip -q -X -9 "$2" -@
  mv "$3" "$1"
)
