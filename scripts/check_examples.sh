#!/usr/bin/env bash
# Compiles the examples of docs/control-protocol.md, one of each language. Ends with the line
# "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
packages=(mono-mcs libmono-system-core4.0-cil python3)
command -v node >/dev/null || packages+=(nodejs)
scripts/install_packages.sh "${packages[@]}"
box=$(mktemp -d)
trap 'rm -rf "$box"' EXIT

compile() {
  case "$1" in
    csharp) mcs -target:library -r:System.Core -warnaserror -out:"$box/example.dll" "$2" ;;
    python) python3 -W error -m py_compile "$2" ;;
    javascript) node --check "$2" ;;
  esac
}

passed=0
failed=0
for language in csharp:cs python:py javascript:js; do
  file=$box/example.${language#*:}
  sed -n "/^\`\`\`${language%:*}\$/,/^\`\`\`\$/p" docs/control-protocol.md | sed '/^```/d' >"$file"
  if [ -s "$file" ] && compile "${language%:*}" "$file"; then
    passed=$((passed + 1))
  else
    echo "docs/control-protocol.md: the example in ${language%:*} is missing or does not compile"
    failed=$((failed + 1))
  fi
done
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
