#!/usr/bin/env bash
# build.sh PRESET [-U NAME | -DNAME=VALUE]... [OPTION...]: configures and builds a preset, with the
# options of `cmake --build`. The compiler speaks only when something is wrong. With ccache, when the
# machine has it.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
log=build/$preset.log
shift
mkdir -p build
values=()
while [[ ${1-} == -[UD]* ]]; do
  [ "$1" != -U ] || { values+=("$1") && shift; }
  values+=("$1")
  shift
done
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi
if ! { cmake --preset "$preset" "${values[@]}" && cmake --build --preset "$preset" "$@"; } >"$log" 2>&1; then
  tail -n 60 "$log"
  exit 1
fi
