#!/usr/bin/env bash
# signatures.sh CLONE: packages signed with a throw-away certificate and stamped by a time stamp server
# on loopback. The signatures are good, a changed byte is noticed, the password stands on no command line,
# and a certificate that is none is refused in front of everything else.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
clone=$(cd "$1" && pwd)
box=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server"; rm -rf "$box"' EXIT

make_certificates() {
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$box/key.pem" -out "$box/vendor.pem" -days 2 \
    -subj '/CN=Throw-away vendor' -addext extendedKeyUsage=codeSigning
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$box/stamp-key.pem" -out "$box/stamp.pem" -days 2 \
    -subj '/CN=Throw-away clock' -addext extendedKeyUsage=critical,timeStamping
  echo 'pass-words-of-the-vendor' >"$box/password"
  openssl pkcs12 -export -inkey "$box/key.pem" -in "$box/vendor.pem" -out "$box/vendor.p12" -passout "file:$box/password"
}

# Writes its port to $box/port.
start_stamp_server() {
  echo 01 >"$box/serial"
  cat >"$box/stamp.cnf" <<CNF
[tsa]
serial = $box/serial
crypto_device = builtin
signer_digest = sha256
default_policy = 1.2.3.4
digests = sha256
CNF
  perl "$root/tests/package/stamp_server.pl" "$box" >"$box/server.log" 2>&1 &
  server=$!
  for _ in $(seq 100); do [ ! -s "$box/port" ] || return 0; sleep 0.1; done
  return 1
}

# Notes each command line of osslsigncode.
watch_command_lines() {
  mkdir "$box/bin"
  printf '#!/bin/sh\necho "$*" >>"%s/lines"\nexec %s "$@"\n' "$box" "$(command -v osslsigncode)" >"$box/bin/osslsigncode"
  chmod +x "$box/bin/osslsigncode"
}
signed_package() { env PATH="$box/bin:$PATH" "$clone/scripts/package.sh" --output "$box/dist" --sign "$box/vendor.p12" "$@"; }

verify() { osslsigncode verify -CAfile "$box/vendor.pem" -TSA-CAfile "$box/stamp.pem" -in "$1"; }
is_bad() { ! verify "$1"; }

# change_byte FILE OFFSET
change_byte() {
  local byte
  byte=$(od -An -tu1 -j "$2" -N 1 "$1")
  printf '%b' "\\x$(printf %x $(((byte + 1) % 256)))" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}

good_signatures() {
  local file
  succeeds 'a signed package' signed_package --password-file "$box/password" --timestamp "http://127.0.0.1:$(cat "$box/port")/"
  unzip -q "$box"/dist/*.zip -d "$box/unzipped"
  for file in "$box"/unzipped/*/*.exe "$box"/dist/*.msi; do
    succeeds "${file##*/} is signed" verify "$file"
    expect "${file##*/} is stamped" 1 "$(verify "$file" | grep -c 'Throw-away clock' | sed 's/^[1-9].*/1/')"
    change_byte "$file" 100000
    succeeds "${file##*/} with a changed byte" is_bad "$file"
  done
  succeeds 'the sums are those of the signed files' grep -q "^$(sha256sum "$box"/dist/*.zip | cut -d' ' -f1) " "$box/dist/SHA256SUMS"
  expect 'the command lines were seen' 1 "$(grep -c 'TavrinService.exe' "$box/lines")"
  expect 'no password on them' 0 "$(grep -c 'pass-words' "$box/lines" || true)"
}

password_from_the_environment() {
  rm -rf "$box/dist" "$box/unzipped"
  export TAVRIN_SIGN_PASSWORD=pass-words-of-the-vendor
  succeeds 'a password from the environment' signed_package
  unset TAVRIN_SIGN_PASSWORD
  succeeds 'its installer is signed' verify "$(ls "$box"/dist/*.msi)"
  expect 'still no password on a command line' 0 "$(grep -c 'pass-words' "$box/lines" || true)"
}

# refuses WHAT LINE OPTION...: before anything is built, and with nothing left.
refuses() {
  rm -rf "$box/dist"
  fails_with "$1" "package.sh: $2" "$clone/scripts/package.sh" --output "$box/dist" "${@:3}"
  expect "$1: nothing is left" '' "$(find "$box" -maxdepth 1 -name 'dist*' -o -maxdepth 1 -name '.package*')"
}

wrong_certificates() {
  echo other-words >"$box/other"
  echo junk >"$box/junk.p12"
  refuses 'no certificate' "the certificate $box/none.p12 does not exist" --sign "$box/none.p12"
  refuses 'no password' "--sign wants the certificate's password: --password-file FILE, or the variable TAVRIN_SIGN_PASSWORD" \
    --sign "$box/vendor.p12"
  refuses 'no file with the password' "the password's file $box/none does not exist" --sign "$box/vendor.p12" --password-file "$box/none"
  refuses 'the wrong password' \
    "trial.msi can't be signed with $box/vendor.p12: Failed to parse PKCS#12 file: $box/vendor.p12 (Wrong password?)" \
    --sign "$box/vendor.p12" --password-file "$box/other"
  refuses 'a certificate that is none' \
    "trial.msi can't be signed with $box/junk.p12: Failed to extract PKCS#12 data: $box/junk.p12" \
    --sign "$box/junk.p12" --password-file "$box/password"
  kill "$server"
  wait "$server" || true
  server=
  said=$("$clone/scripts/package.sh" --output "$box/dist" --sign "$box/vendor.p12" --password-file "$box/password" \
    --timestamp "http://127.0.0.1:$(cat "$box/port")/" 2>&1) && said=accepted
  expect 'no time stamp server' "package.sh: trial.msi can't be signed with $box/vendor.p12: " \
    "$(grep -o "^package.sh: .*vendor.p12: " <<<"$said")"
  expect 'and nothing is left' '' "$(find "$box" -maxdepth 1 -name 'dist*')"
}

make_certificates 2>/dev/null
watch_command_lines
start_stamp_server
good_signatures
password_from_the_environment
wrong_certificates
finish
