#!/usr/bin/env bash
# build.sh PRESET [OPTION...]: configures and builds a preset, with `cmake --build`'s options. The
# compiler speaks only when something is wrong. With ccache, when the machine has it.
set -euo pipefail
cd "$(dirname "$0")/.."
log=build/$1.log
mkdir -p build
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi
if ! { cmake --preset "$1" && cmake --build --preset "$@"; } >"$log" 2>&1; then
  tail -n 60 "$log"
  exit 1
fi
