#!/usr/bin/env bash
# check_executable.sh FILE [KIB]: what ships is no larger than KIB (the service's 330), stripped, hardened,
# carries its resources, and needs no DLL but those that every Windows brings.
set -euo pipefail
file=$1
dump=$(x86_64-w64-mingw32-objdump -p "$file")
failed=0
complain() {
  echo "$file: $1"
  failed=1
}
size=$(stat -c %s "$file")
most=${2:-330}
[ "$size" -le $((most * 1024)) ] || complain "$size bytes are more than $most KiB"
for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
  grep -q "$flag" <<<"$dump" || complain "$flag is not set"
done
grep -qE 'Entry 5 0*[1-9a-f][0-9a-f]* [0-9a-f]+ Base Relocation' <<<"$dump" || complain "no relocations, so no ASLR"
while read -r dll; do
  case "${dll,,}" in
    advapi32.dll | bcrypt.dll | iphlpapi.dll | kernel32.dll | msvcrt.dll | winhttp.dll | crypt32.dll | ws2_32.dll | version.dll) ;;
    *) complain "needs $dll" ;;
  esac
done < <(sed -n 's/.*DLL Name: //p' <<<"$dump")
! x86_64-w64-mingw32-nm "$file" 2>/dev/null | grep -q . || complain "is not stripped"
grep -qa 'level="asInvoker"' "$file" || complain "has no asInvoker manifest"
grep -qaP 'T\x00a\x00v\x00r\x00i\x00n\x00 \x00c\x00o\x00' "$file" ||
  complain "has no version resource"
[ "$failed" = 0 ] && echo "$file: $size bytes, as it should be"
exit "$failed"
