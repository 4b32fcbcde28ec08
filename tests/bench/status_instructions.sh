#!/usr/bin/env bash
# status_instructions.sh --out FILE [--quick] [--rounds N]: the instructions of the service's own code
# for one request for the status, beside a plain scan of the bytes of request and reply, and apart from
# the writing of the log's line, which is a subject of its own. The difference of two runs of different
# lengths takes off what happens once.
set -euo pipefail
shopt -s inherit_errexit
cd "$(dirname "$0")/../.."
out=
for ((i = 1; i <= $#; ++i)); do
  case "${!i}" in
    --out) ((++i)) && out=${!i} ;;
    --rounds) ((++i)) ;; # a count is the same in every round
    --quick) ;;
    *) out= && break ;;
  esac
done
[ -n "$out" ] || { echo "usage: $0 --out FILE [--quick] [--rounds N]" >&2 && exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Valgrind does not read clang's debug information; the symbols are enough.
strip -g -o "$work/status_exchange" build/bench/tests/bench/status_exchange
# What is not the service's own: the functions of the simulated platform, the files of the C runtime.
{
  sed -nE 's/^ *(Never|Named|Last|Result)\("(\w+)".*/\2/p; s/^ *\{"(\w+)", FailureStyle.*/\1/p' \
    tests/sim/api_table.cpp
  printf '%s\n' _get_osfhandle _fileno _fseeki64 fopen fread fwrite fflush fclose
} >"$work/platform"

# in_run MODE COUNT FUNCTION: the instructions of FUNCTION in such a run, without the platform's.
in_run() {
  valgrind --tool=callgrind --compress-strings=no --compress-pos=no \
    --callgrind-out-file="$work/profile" "$work/status_exchange" "$1" "$2" 2>"$work/log" >&2 ||
    { cat "$work/log" >&2 && return 1; }
  awk -v measured="$3" '
    function bare(name) { sub(/^c?fn=/, "", name); sub(/[(@\x27].*/, "", name); return name }
    NR == FNR { platform[$1] = 1; next }
    /^fn=/ { own = /vpn::/ && !/sim::/ && !(bare($0) in platform); next }
    /^cfn=/ { callee = bare($0); next }
    /^calls=/ {
      getline cost
      sub(/.* /, "", cost)
      if (callee == measured) sum += cost
      else if (own && (callee in platform)) sum -= cost
    }
    END { if (sum <= 0) exit 1; print sum }' "$work/platform" "$work/profile"
}

# for_each MODE FUNCTION: the instructions for one of COUNT.
for_each() {
  local few=200 many=400 cost_of_few cost_of_many
  cost_of_few=$(in_run "$1" $few "$2")
  cost_of_many=$(in_run "$1" $many "$2")
  echo $(((cost_of_many - cost_of_few + (many - few) / 2) / (many - few)))
}

line() {
  printf '{"figure":"status-instructions","subject":"%s","size":0,"unit":"instructions","samples":[%s]}\n' "$@"
}

request=$(for_each status vpn::ServeControlPipe)
log=$(for_each log vpn::WriteLog)
scan=$(for_each scan PlainScan)
{
  line service $((request - log))
  line log "$log"
  line scan "$scan"
} >"$out"
