#!/usr/bin/env bash
# package.sh [OPTION...]: builds both executables and makes dist/ with the installer, the zip, SHA256SUMS
# and the list of what is inside. The same commit gives the same bytes in every directory.
#   --with-helpers DIR    puts DIR/xray and DIR/tun2socks into both packages
#   --sign CERT.p12       signs the executables and the installer; the password is the first line of the
#                         file that --password-file names, or the variable TAVRIN_SIGN_PASSWORD
#   --password-file FILE
#   --timestamp URL       has the signatures stamped by a time stamp server
#   --version VERSION     another version than the project's
#   --output DIR          another directory than dist
#   -DNAME=VALUE          a value of cmake/deployment.cmake
set -euo pipefail
export TZ=UTC LC_ALL=C  # times and the order of names go into the packages
root=$(cd "$(dirname "$0")/.." && pwd)
for part in files msi sign spdx; do
  # shellcheck source=/dev/null
  . "$root/scripts/package/$part.sh"
done

give_up() {
  echo "package.sh: $1" >&2
  exit 1
}

usage() {
  sed -n '2,/^set /s/^# \{0,1\}//p' "$0" >&2
  exit 3
}

helpers='' certificate='' password_file='' timestamp='' version='' output=$root/dist
constants=()
while [ $# -gt 0 ]; do
  case "$1" in
    -D?*=*) constants+=("$1") && shift && continue ;;
    --with-helpers | --sign | --password-file | --timestamp | --version | --output) [ $# -gt 1 ] || usage ;;
    *) usage ;;
  esac
  case "$1" in
    --with-helpers) helpers=$(realpath -ms -- "$2") ;;
    --sign) certificate=$(realpath -ms -- "$2") ;;
    --password-file) password_file=$(realpath -ms -- "$2") ;;
    --timestamp) timestamp=$2 ;;
    --version) version=$2 ;;
    --output) output=$(realpath -ms -- "$2") ;;
  esac
  shift 2
done

# Everything is made beside the output, and takes its place at the end.
take_output() {
  local parent=${output%/*}
  [ -d "${parent:=/}" ] || give_up "$parent does not exist"
  [ ! -e "$output" ] || [ -d "$output" ] || give_up "$output is in the way: it is no directory"
  [ ! -e "$output" ] || [ -w "$output" ] || give_up "$output can't be written"
  work=$(mktemp -d "$parent/.package-XXXXXX" 2>/dev/null) || give_up "$parent can't be written"
  trap 'rm -rf "$work"' EXIT
  made=$work/made stage=$work/stage
  mkdir -m 755 "$made" "$stage"
}

check_values() {
  local said
  [ -z "$version" ] || constants+=("-DTAVRIN_VERSION=$version")
  if ! said=$(cmake "${constants[@]}" -P "$root/cmake/deployment.cmake" 2>&1); then
    give_up "$(sed -n 's/^ *\(TAVRIN_[A-Z_]*: \)/\1/p' <<<"$said")"
  fi
}

# With the time of the commit, so that the packages tell nothing of when and where they were made.
take_time() {
  SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || true)}
  [ -n "$SOURCE_DATE_EPOCH" ] || give_up "this is no clone: SOURCE_DATE_EPOCH must name the time, in seconds"
  export SOURCE_DATE_EPOCH
}

# Without what an earlier run was given.
build() {
  "$root/scripts/build.sh" package -U 'TAVRIN_*' -DTAVRIN_TESTS=OFF "${constants[@]}" ||
    give_up "the build has failed; its log is build/package.log"
  build=$root/build/package
  version=$(file_version "$build/TavrinService.exe")
  version=${version%.0}
}

cd "$root"
take_output
check_values
[ -z "$helpers" ] || check_helpers
scripts/install_packages.sh cmake ninja-build g++-mingw-w64-x86-64-posix nlohmann-json3-dev libcli11-dev \
  wixl msitools zip ${certificate:+osslsigncode}
take_time
[ -z "$certificate" ] || try_certificate
build
fill_stage "$stage"
name=tavrin-$version-x64
make_zip "$stage" "$made/$name.zip" "tavrin-$version"
make_msi "$stage" "$made/$name.msi" "$version" "$(remark)"
[ -z "$certificate" ] || sign "$made/$name.msi"
make_spdx "$stage" "$made/$name.spdx" "$version"
(cd "$made" && sha256sum "$name.msi" "$name.spdx" "$name.zip" >SHA256SUMS)
[ ! -e "$output" ] || mv "$output" "$work/old"
mv "$made" "$output"
cat "$output/SHA256SUMS"
remark
