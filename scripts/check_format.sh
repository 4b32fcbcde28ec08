#!/usr/bin/env bash
# Every C++ file as clang-format would write it.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z --cached --others --exclude-standard '*.cpp' '*.h' |
  xargs -0 clang-format --dry-run -Werror
