#!/usr/bin/env bash
# Builds TavrinService.exe and shows its main job on a simulated network under Wine: a connect with
# a local account, the tunnel up, and a disconnect that leaves the machine as it was. Ends with 0
# only if everything was as expected.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install_packages.sh cmake ninja-build g++-mingw-w64-x86-64-posix wine wine64 \
  nlohmann-json3-dev libcli11-dev
echo "Building (quiet; the log is build/demo.log) ..."
scripts/build.sh demo
exec scripts/demo.sh build/demo
