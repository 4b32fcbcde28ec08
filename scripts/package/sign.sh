# For scripts/package.sh, to be sourced: signatures with a certificate of PKCS #12. The password comes
# from a file, which the variable `password_file` names; it never stands on a command line.

# sign FILE: in place, with $certificate and, when it is given, the time stamp server $timestamp.
sign() {
  local stamp=() said
  [ -z "$timestamp" ] || stamp=(-ts "$timestamp")
  if ! said=$(osslsigncode sign -pkcs12 "$certificate" -readpass "$password_file" -h sha256 -n Tavrin \
    "${stamp[@]}" -in "$1" -out "$1.signed" 2>&1); then
    rm -f "$1.signed"
    give_up "${1##*/} can't be signed with $certificate: $(grep -v '^$' <<<"$said" | head -n 1)"
  fi
  mv "$1.signed" "$1"
}

# Proves certificate, password and time stamp server with an empty installer, before anything is built.
try_certificate() {
  [ -f "$certificate" ] || give_up "the certificate $certificate does not exist"
  if [ -z "$password_file" ]; then
    [ -n "${TAVRIN_SIGN_PASSWORD+given}" ] ||
      give_up "--sign wants the certificate's password: --password-file FILE, or the variable TAVRIN_SIGN_PASSWORD"
    password_file=$work/password
    (umask 077 && printf '%s' "$TAVRIN_SIGN_PASSWORD" >"$password_file")
  fi
  [ -f "$password_file" ] || give_up "the password's file $password_file does not exist"
  msibuild "$work/trial.msi" -s trial
  sign "$work/trial.msi"
}
