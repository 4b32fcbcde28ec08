#!/usr/bin/env bash
# repeatable.sh DIRECTORY: two clean clones of this commit, in directories whose names differ in length,
# give the same bytes: both executables, the zip, the installer and the list of what is inside. Leaves the
# clones in DIRECTORY; the first one's dist is what the other tests of the package take.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"
rm -rf "$1"
mkdir -p "$1"
directory=$(cd "$1" && pwd)

# make_package CLONE ZONE: without ccache, which could give the second one what it has from the first one.
make_package() {
  CCACHE_DISABLE=1 TZ=$2 "$1/scripts/package.sh"
}

first=$directory/clone second=$directory/another/much-longer-name
git clone -q "$root" "$first"
git clone -q "$first" "$second"  # the same commit, whatever is committed meanwhile
succeeds 'the first clone' make_package "$first" UTC
sleep 2  # the times of the files differ, in the steps of a zip too
umask 027
succeeds 'the second clone' make_package "$second" Asia/Tokyo
for file in build/package/TavrinService.exe build/package/tavrinctl.exe \
  $(cd "$first" && ls dist/*.msi dist/*.zip dist/*.spdx dist/SHA256SUMS); do
  succeeds "the same bytes: $file" cmp "$first/$file" "$second/$file"
done
succeeds 'the sums are right' env -C "$first/dist" sha256sum --check --strict --quiet SHA256SUMS
expect 'four files' 'SHA256SUMS tavrin-0.1.0-x64.msi tavrin-0.1.0-x64.spdx tavrin-0.1.0-x64.zip' \
  "$(ls "$first/dist" | tr '\n' ' ' | sed 's/ $//')"
unzip -q "$first"/dist/*.zip -d "$directory/unzipped"
cd "$directory/unzipped/tavrin-0.1.0"
expect 'the list has each file of the zip, with its hash' \
  "$(find . -type f | LC_ALL=C sort | xargs sha256sum | awk '{ print $2, $1 }')" \
  "$(awk '/^FileName: / { file = $2 } /^FileChecksum: SHA256: / { print file, $3 }' "$first"/dist/*.spdx)"
expect 'the installer has as many files' "$(find . -type f | wc -l)" \
  "$(msiinfo export "$first"/dist/*.msi File | tail -n +4 | wc -l)"
for file in "$first"/build/package/*.exe; do
  expect "no directory of the build in ${file##*/}" 0 "$(grep -cF "$directory" "$file" || true)"
done
finish
