# For the package's tests, to be sourced: counts what was checked, and ends with "N passed, N failed".
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
passed=0
failed=0

# expect WHAT WANTED GOT
expect() {
  if [ "$2" = "$3" ]; then
    passed=$((passed + 1))
  else
    printf 'NOT AS EXPECTED: %s\n  wanted: %s\n  got:    %s\n' "$1" "$2" "$3"
    failed=$((failed + 1))
  fi
}

# succeeds WHAT COMMAND...: shows the command's output when it fails.
succeeds() {
  local what=$1 output code=0
  shift
  output=$("$@" 2>&1) || code=$?
  expect "$what${output:+ ($(tail -n 5 <<<"$output"))}" 0 "$code"
}

# fails_with WHAT LINE COMMAND...: ends with an exit code other than 0, and the line stands in the output.
fails_with() {
  local what=$1 line=$2 output code=0
  shift 2
  output=$("$@" 2>&1) || code=$?
  expect "$what: refused" refused "$([ "$code" = 0 ] && echo accepted || echo refused)"
  expect "$what: the line" "$line" "$(grep -xF -- "$line" <<<"$output" | head -n 1 || tail -n 5 <<<"$output")"
}

finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" = 0 ] && [ "$passed" -gt 0 ]
}
