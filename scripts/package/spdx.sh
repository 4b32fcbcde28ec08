# For scripts/package.sh, to be sourced: the list of what is inside, as SPDX 2.3 in tag-value form.

sha1_of() { sha1sum "$1" | cut -d' ' -f1; }

# package_version DEBIAN_PACKAGE
package_version() { dpkg-query -W -f '${Version}' "$1"; }

# spdx_package NAME VERSION SUPPLIER LICENCE: a library in the executables.
spdx_package() {
  printf '\nPackageName: %s\nSPDXID: SPDXRef-%s\nPackageVersion: %s\nPackageSupplier: %s\n' "$1" "$1" "$2" "$3"
  printf 'PackageDownloadLocation: NOASSERTION\nFilesAnalyzed: false\n'
  printf 'PackageLicenseConcluded: NOASSERTION\nPackageLicenseDeclared: %s\nPackageCopyrightText: NOASSERTION\n' "$4"
  printf 'Relationship: SPDXRef-Tavrin STATIC_LINK SPDXRef-%s\n' "$1"
}

spdx_libraries() {
  local debian='Organization: Debian'
  spdx_package CLI11 "$(package_version libcli11-dev)" "$debian" BSD-3-Clause
  spdx_package nlohmann-json "$(package_version nlohmann-json3-dev)" "$debian" MIT
  spdx_package libstdcxx "$(package_version g++-mingw-w64-x86-64-posix)" "$debian" 'GPL-3.0-or-later WITH GCC-exception-3.1'
  spdx_package mingw-w64-runtime "$(package_version mingw-w64-x86-64-dev)" "$debian" ZPL-2.1
}

spdx_files() {
  local file number=0
  while read -r file; do
    number=$((number + 1))
    printf '\nFileName: %s\nSPDXID: SPDXRef-File-%s\n' "$file" "$number"
    printf 'FileChecksum: SHA1: %s\n' "$(sha1_of "$file")"
    printf 'FileChecksum: SHA256: %s\n' "$(sha256sum "$file" | cut -d' ' -f1)"
    printf 'LicenseConcluded: NOASSERTION\nLicenseInfoInFile: NOASSERTION\nFileCopyrightText: NOASSERTION\n'
  done < <(find . -type f | LC_ALL=C sort)
}

# make_spdx STAGE FILE VERSION
make_spdx() (
  cd "$1"
  sums=$(find . -type f | while read -r file; do sha1_of "$file"; done | LC_ALL=C sort | tr -d '\n')
  {
    printf 'SPDXVersion: SPDX-2.3\nDataLicense: CC0-1.0\nSPDXID: SPDXRef-DOCUMENT\n'
    printf 'DocumentName: tavrin-%s-x64\n' "$3"
    printf 'DocumentNamespace: urn:uuid:%s\n' "$(guid "spdx $3 $sums" | tr A-F a-f)"
    printf 'Creator: Tool: scripts/package.sh\nCreated: %s\n' "$(date -u -d "@$SOURCE_DATE_EPOCH" '+%Y-%m-%dT%H:%M:%SZ')"
    printf 'Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-Tavrin\n'
    printf '\nPackageName: Tavrin\nSPDXID: SPDXRef-Tavrin\nPackageVersion: %s\n' "$3"
    printf 'PackageDownloadLocation: NOASSERTION\nFilesAnalyzed: true\n'
    printf 'PackageVerificationCode: %s\n' "$(printf %s "$sums" | sha1sum | cut -d' ' -f1)"
    printf 'PackageLicenseConcluded: NOASSERTION\nPackageLicenseInfoFromFiles: NOASSERTION\n'
    printf 'PackageLicenseDeclared: NOASSERTION\nPackageCopyrightText: NOASSERTION\n'
    spdx_files
    spdx_libraries
  } >"$2"
)
