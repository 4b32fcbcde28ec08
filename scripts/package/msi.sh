# For scripts/package.sh, to be sourced: the installer, from the files of a stage. wixl gives codes and
# times by chance and by the clock; here they come from what is inside and from the commit.

# guid NAME: the same for the same name.
guid() {
  local hash
  hash=$(sha256sum <<<"tavrin $1" | tr a-f A-F)
  echo "${hash:0:8}-${hash:8:4}-8${hash:13:3}-A${hash:17:3}-${hash:20:12}"
}

# A name of a row: letters, digits, underscores and dots.
id_of() { tr -c 'A-Za-z0-9_.\n' _ <<<"${1//\//.}"; }

# component_xml ID CONTENT: its code belongs to the path for good, in all versions.
component_xml() {
  printf '<Component Id="%s" Guid="%s" Win64="yes">%s</Component>\n' "$1" "$(guid "component $1")" "$2"
  printf '<ComponentRef Id="%s"/>\n' "$1" >>"$components"
}

# directory_xml PATH ID: the content of a directory of the stage ("." is the installation's).
directory_xml() {
  local entry path id
  component_xml "folder.$2" '<CreateFolder/>'
  for entry in "$1"/*; do
    path=${entry#./}
    id=$(id_of "$path")
    if [ -d "$entry" ]; then
      printf '<Directory Id="%s" Name="%s">\n' "$id" "${entry##*/}"
      directory_xml "$entry" "$id"
      printf '</Directory>\n'
    elif [ -e "$entry" ]; then
      component_xml "$id" "<File Id=\"$id\" Name=\"${entry##*/}\" Source=\"$path\" KeyPath=\"yes\"/>"
    fi
  done
}

# file_version FILE: of its version resource, as 1.2.3.0; nothing when it has none.
file_version() {
  local offset words
  offset=$(LC_ALL=C grep -obUaP '\xbd\x04\xef\xfe' "$1" | head -n 1 | cut -d: -f1 || true)
  [ -n "$offset" ] || return 0
  read -ra words < <(od -An -tu2 -j $((offset + 8)) -N 8 "$1")
  echo "${words[1]}.${words[0]}.${words[3]}.${words[2]}"
}

# Windows Installer compares a file by its version when it has one, else by its hash.
version_statements() {
  local file version id
  find . -name '*.exe' -o -name '*.dll' | LC_ALL=C sort | while read -r file; do
    version=$(file_version "$file")
    id=$(id_of "${file#./}")
    [ -n "$version" ] || continue
    echo "UPDATE \`File\` SET \`Version\` = '$version', \`Language\` = '1033' WHERE \`File\` = '$id'"
    echo "DELETE FROM \`MsiFileHash\` WHERE \`File_\` = '$id'"
  done
}

# fix_summary MSI CODE: the package's own code and its two times.
fix_summary() {
  local time
  time=$(date -u -d "@$SOURCE_DATE_EPOCH" '+%Y/%m/%d %H:%M:%S')
  msiinfo export "$1" _SummaryInformation | tr -d '\r' |
    sed -E "s|^9\t.*|9\t{$2}|; s|^(1[23])\t.*|\1\t$time|" >"$work/summary.idt"
  msibuild "$1" -i "$work/summary.idt"
}

# make_msi STAGE MSI VERSION REMARK
make_msi() (
  cd "$1"
  components=$work/components.xml
  : >"$components"
  directory_xml . INSTALLDIR >"$work/files.xml"
  content=$(find . -type f -print0 | LC_ALL=C sort -z | xargs -0 sha256sum |
    cat - "$root/packaging/tavrin.wxs.in" "$root/packaging/tables.sql" | sha256sum)
  sed -e "s|@product_code@|$(guid "product $3 $content")|; s|@version@|$3|g; s|@remark@|${4//\\/\\\\}|g" \
    -e "/@files@/{r $work/files.xml" -e 'd}' -e "/@components@/{r $components" -e 'd}' \
    "$root/packaging/tavrin.wxs.in" >"$work/tavrin.wxs"
  cp "$work/tavrin.wxs" .
  wixl --arch x64 --output "$2" tavrin.wxs
  rm tavrin.wxs
  { sed "s/@version@/$3/" "$root/packaging/tables.sql"; version_statements; } | while IFS= read -r statement; do
    msibuild "$2" -q "$statement" || { echo "in: $statement" && exit 1; }
  done
  fix_summary "$2" "$(guid "package $3 $SOURCE_DATE_EPOCH $content")"
)
